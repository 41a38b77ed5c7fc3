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

/// Keeps the newest trace messages of the process in a fixed piece of memory, for a look afterwards. Recording does
/// no I/O and allocates nothing. Any thread may call anything here.
class DHCPPLATFORM_EXPORT RingTrace {
public:
    static constexpr std::size_t capacity = 512;      ///< messages
    static constexpr std::size_t textCapacity = 224;  ///< bytes of a message; what is longer is cut

    struct Record {
        Kcore::U64 sequence;  ///< counts from 0, over every message of the process
        std::chrono::system_clock::time_point time;
        std::string_view handle;
        int level;
        std::string_view text;  ///< as long as the call that receives the record
    };
    /// Turns the number of an enumeration's member into its name.
    struct Formatter {
        std::string_view name;
        void (*append)(std::string& out, Kcore::U64 value);
    };

    /// Messages up to this level are kept; 1 at first.
    static int level() { return level_.load(std::memory_order_relaxed); }
    static void levelIs(int level) { level_.store(level, std::memory_order_relaxed); }
    static bool wanted(int level) { return level <= RingTrace::level(); }

    static void record(const TraceHandle& handle, int level, std::string_view text);
    /// Calls `see` for each message kept at the time of the call, oldest first, without those overwritten meanwhile.
    static void visit(const std::function<void(const Record&)>& see);
    /// One line a message, oldest first, its text between quotes with bytes outside printable ASCII as \xNN.
    static void dump(std::ostream& out);
    /// Forgets the messages.
    static void clear();

    /// Adds an enumeration's formatter; the first of a name stays.
    static void formatterIs(const Formatter& formatter);
    static std::vector<Formatter> formatters();

private:
    static std::atomic<int> level_;
};

}  // namespace Tyk
