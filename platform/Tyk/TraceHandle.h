#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "Kcore/Export.h"
#include "Kcore/SourceSite.h"

namespace Tyk {

/// What a module traces to. Handles of the same name share one level, so an agent sets the level of a library that
/// keeps its handle to itself: `TraceHandle("DhcpLib", false).levelIs(4)`.
class DHCPPLATFORM_EXPORT TraceHandle {
public:
    /// `timeStamped`: whether this handle's lines on stderr start with the time of day. The first handle of a name
    /// takes its level from the decimal number in the environment's DHCPLIB_TRACE; 0 without one.
    TraceHandle(std::string_view name, bool timeStamped);

    /// Stays valid until the process ends.
    std::string_view name() const { return facility_->name; }
    bool timeStamped() const { return timeStamped_; }

    /// Lines up to this level are wanted. Lines have levels from 1 (errors), so 0 is silence.
    int level() const { return facility_->level.load(std::memory_order_relaxed); }
    void levelIs(int level) { facility_->level.store(level, std::memory_order_relaxed); }
    bool wanted(int level) const { return level <= this->level(); }

private:
    struct Facility {
        Facility(std::string_view itsName, int firstLevel) : name(itsName), level(firstLevel) {}
        const std::string name;
        std::atomic<int> level;
    };
    static Facility& facilityNamed(std::string_view name);

    Facility* facility_;
    bool timeStamped_;
};

/// Where a line is traced: `{}` is the caller's place, `{"int f(char)"}` the same with the function's text replaced.
struct TraceSite {
    /// `functionText`: a literal; null is the caller's bare name.
    constexpr TraceSite(const char* functionText = nullptr, Kcore::SourceSite caller = Kcore::SourceSite::here())
        : file(caller.file), line(caller.line), function(functionText != nullptr ? functionText : caller.function) {}
    /// Member by member, so that compilers put off the copy, and the site with it, to the line that is wanted.
    constexpr TraceSite(const TraceSite& other) : file(other.file), line(other.line), function(other.function) {}
    TraceSite& operator=(const TraceSite&) = default;

    const char* file;
    unsigned line;
    const char* function;
};

}  // namespace Tyk
