#pragma once

#include <functional>
#include <optional>
#include <string>

#include "capture/Arrival.h"

namespace DhcpTool {

/// Where a command takes its frames from.
class Source {
public:
    virtual ~Source() = default;

    /// The next frame, for which it waits if needed; none at the end. Throws CaptureError if frames are missing before
    /// the end; what was returned before is valid.
    virtual std::optional<Arrival> next() = 0;
    /// Whether the next call of next() may wait: what the user should see by then has to be flushed before.
    virtual bool mayWait() const = 0;
    /// Calls `wake` about that often while next() waits or takes frames, if frames arrive in real time. Else never. If
    /// `wake` returns false, the source ends.
    virtual void wakeEvery(std::chrono::milliseconds, std::function<bool()>) {}
    /// Size in bytes, and how much of it was read; 0 if it is not known.
    virtual U64 size() const { return 0; }
    virtual U64 position() const { return 0; }
    /// Whether `path` refers to a file that is being read.
    virtual bool reads(const std::string&) const { return false; }
    /// Calls `show` with each line of counters for the end of the output.
    virtual void forEachCount(const std::function<void(const std::string&)>&) const {}
};

}  // namespace DhcpTool
