#pragma once

#include <csignal>

#include "Kcore/FileDescriptor.h"

namespace DhcpTool {

/// While it exists, the first SIGINT or SIGTERM only makes `fd` readable; the second one ends the process. Only one may
/// exist at a time.
class StopSignal {
public:
    /// Throws std::system_error if no pipe can be created.
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    int fd() const { return readable_.get(); }
    /// Whether a signal has arrived.
    bool signalled() const;

private:
    Kcore::FileDescriptor readable_, written_;
    struct sigaction interruptBefore_ {
    }, terminateBefore_{};
};

}  // namespace DhcpTool
