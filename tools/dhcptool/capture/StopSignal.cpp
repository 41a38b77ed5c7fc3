#include "capture/StopSignal.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <system_error>

namespace DhcpTool {

namespace {

std::atomic<int> pipeEnd{-1};
std::atomic<bool> arrived{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

extern "C" void tellOfSignal(int) {
    const int errnoBefore = errno;
    arrived = true;
    [[maybe_unused]] const auto written = ::write(pipeEnd, "", 1);
    errno = errnoBefore;
}

}  // namespace

StopSignal::StopSignal() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::system_error(errno, std::system_category(), "pipe");
    readable_ = Kcore::FileDescriptor(ends[0]);
    written_ = Kcore::FileDescriptor(ends[1]);
    pipeEnd = ends[1];
    arrived = false;
    struct sigaction action {};
    action.sa_handler = tellOfSignal;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    ::sigaction(SIGINT, &action, &interruptBefore_);
    ::sigaction(SIGTERM, &action, &terminateBefore_);
}

bool StopSignal::signalled() const { return arrived; }

StopSignal::~StopSignal() {
    ::sigaction(SIGINT, &interruptBefore_, nullptr);
    ::sigaction(SIGTERM, &terminateBefore_, nullptr);
}

}  // namespace DhcpTool
