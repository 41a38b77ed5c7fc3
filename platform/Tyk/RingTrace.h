#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "Kcore/Export.h"
#include "Kcore/Types.h"

namespace Tyk {

class TraceHandle;

/// Keeps the newest trace messages of the process in a fixed buffer, for later inspection. Recording does no I/O and
/// allocates nothing. All functions may be called from any thread.
class DHCPPLATFORM_EXPORT RingTrace {
public:
    static constexpr std::size_t capacity = 512;      ///< messages
    static constexpr std::size_t textCapacity = 224;  ///< bytes of a message; longer ones are cut

    /// One message.
    struct Record {
        Kcore::U64 sequence;                         ///< counted from 0 over all messages of the process
        std::chrono::system_clock::time_point time;  ///< when it was recorded
        std::string_view handle;                     ///< name of the trace handle
        int level;                                   ///< level of the line
        std::string_view text;                       ///< valid during the call that receives the record
    };
    /// Converts the number of an enumeration's member to its name.
    struct Formatter {
        std::string_view name;                               ///< name of the enumeration
        void (*append)(std::string& out, Kcore::U64 value);  ///< appends the name of a number
    };

    /// Messages up to this level are kept. 1 by default.
    static int level() { return level_.load(std::memory_order_relaxed); }
    /// Sets the level up to which lines are recorded.
    static void levelIs(int level) { level_.store(level, std::memory_order_relaxed); }
    /// Whether a line of this level is recorded.
    static bool wanted(int level) { return level <= RingTrace::level(); }

    /// Records a line; the oldest one is overwritten.
    static void record(const TraceHandle& handle, int level, std::string_view text);
    /// Calls `see` for each message that was kept at the time of the call, oldest first. Messages that are overwritten
    /// meanwhile are skipped.
    static void visit(const std::function<void(const Record&)>& see);
    /// Writes one line per message, oldest first. Texts are quoted as Kcore::appendQuoted() does.
    static void dump(std::ostream& out);
    /// Removes all messages.
    static void clear();

    /// Registers the formatter of an enumeration. The first one of a name is kept.
    static void formatterIs(const Formatter& formatter);
    /// All registered formatters.
    static std::vector<Formatter> formatters();

private:
    static std::atomic<int> level_;
};

}  // namespace Tyk
