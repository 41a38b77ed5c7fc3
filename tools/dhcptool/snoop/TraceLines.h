#pragma once

#include <optional>

#include "Kcore/Types.h"
#include "Tyk/Trace.h"

namespace DhcpTool {

/// Prints the library's trace lines on stderr while it exists, each with the number of its frame.
class TraceLines {
public:
    /// Prints lines up to `level`; without one, up to the level of DHCPLIB_TRACE in the environment.
    explicit TraceLines(std::optional<int> level);
    ~TraceLines();
    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;

    /// Sets the frame to which the following lines belong.
    void frameIs(Kcore::U64 number) { frame_ = number; }

private:
    Tyk::TraceHandle handle_{"DhcpLib", false};
    const int levelBefore_;
    Tyk::TraceSink sinkBefore_;
    Kcore::U64 frame_ = 0;
};

}  // namespace DhcpTool
