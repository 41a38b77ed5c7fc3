#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "Kcore/Export.h"
#include "Kcore/SourceSite.h"

namespace Tyk {

/// Names the module that traces and holds its level. Handles of the same name share one level, so an agent can set the
/// level of a library whose handle is private: `TraceHandle("DhcpLib", false).levelIs(4)`.
class DHCPPLATFORM_EXPORT TraceHandle {
public:
    /// `timeStamped`: whether lines on stderr start with the time of day. The first handle of a name takes its level
    /// from DHCPLIB_TRACE in the environment, a decimal number; 0 if it is not set.
    TraceHandle(std::string_view name, bool timeStamped);

    /// Valid until the process ends.
    std::string_view name() const { return facility_->name; }
    /// Whether lines on stderr start with the time of day.
    bool timeStamped() const { return timeStamped_; }

    /// Lines up to this level are wanted. Levels start at 1 (errors), so 0 means silent.
    int level() const { return facility_->level.load(std::memory_order_relaxed); }
    void levelIs(int level) { facility_->level.store(level, std::memory_order_relaxed); }
    /// Whether lines of this level are wanted.
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

/// The place that a trace line names: `{}` is the caller's, `{"int f(char)"}` the same with another function text.
struct TraceSite {
    /// `functionText` must be a literal. Null means the caller's function name.
    constexpr TraceSite(const char* functionText = nullptr, Kcore::SourceSite caller = Kcore::SourceSite::here())
        : file(caller.file), line(caller.line), function(functionText != nullptr ? functionText : caller.function) {}
    /// Member by member: compilers then make the copy only if the line is wanted.
    constexpr TraceSite(const TraceSite& other) : file(other.file), line(other.line), function(other.function) {}
    TraceSite& operator=(const TraceSite&) = default;

    const char* file;      ///< file name
    unsigned line;         ///< line number
    const char* function;  ///< function name
};

}  // namespace Tyk
