#pragma once

#include <csignal>

#include "Kcore/FileDescriptor.h"

namespace DhcpTool {

/// While it lives the first SIGINT or SIGTERM makes `fd` readable, and does nothing else; the second one ends the
/// process. One at a time.
class StopSignal {
public:
    /// Raises std::system_error where the kernel gives no pipe.
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    int fd() const { return readable_.get(); }

private:
    Kcore::FileDescriptor readable_, written_;
    struct sigaction interruptBefore_ {
    }, terminateBefore_{};
};

}  // namespace DhcpTool
