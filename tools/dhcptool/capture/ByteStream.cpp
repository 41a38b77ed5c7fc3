#include "capture/ByteStream.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "capture/Decompressor.h"
#include "capture/StopSignal.h"

namespace DhcpTool {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;

[[noreturn]] void raise() { throw std::system_error(errno, std::system_category()); }

Kcore::FileDescriptor opened(const std::string& path) {
    Kcore::FileDescriptor fd(path == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                         : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) raise();
    return fd;
}

}  // namespace

RawFile::RawFile(const std::string& path, const StopSignal* stop) : fd_(opened(path)), stop_(stop) {}

std::size_t RawFile::read(U8* to, std::size_t size) {
    if (headTaken_ < headBytes_) {
        const std::size_t count = std::min(size, headBytes_ - headTaken_);
        std::copy_n(head_ + headTaken_, count, to);
        headTaken_ += count;
        return count;
    }
    for (;;) {
        if (stop_ != nullptr) awaitData();
        if (stop_ != nullptr && stop_->signalled()) return 0;
        const ssize_t count = ::read(fd_.get(), to, size);
        if (count >= 0) {
            position_ += static_cast<std::size_t>(count);
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) raise();
    }
}

Kcore::U32 RawFile::magic() {
    while (headBytes_ < sizeof head_) {
        headTaken_ = headBytes_;
        const std::size_t count = read(head_ + headBytes_, sizeof head_ - headBytes_);
        if (count == 0) break;
        headBytes_ += count;
    }
    headTaken_ = 0;
    if (headBytes_ < sizeof head_) return 0;
    Kcore::U32 value = 0;
    for (const U8 byte : head_) value = value << 8 | byte;
    return value;
}

/// Returns when there is something to read, or the stop signal.
void RawFile::awaitData() const {
    pollfd wanted[]{{fd_.get(), POLLIN, 0}, {stop_->fd(), POLLIN, 0}};
    while (::poll(wanted, std::size(wanted), -1) < 0)
        if (errno != EINTR) raise();
}

ByteStream::ByteStream(const std::string& path, const StopSignal* stop)
    : raw_(path, stop),
      decompressor_(decompressorOf(raw_)),
      buffer_(std::make_unique_for_overwrite<char[]>(bufferBytes)) {}

ByteStream::~ByteStream() = default;

std::FILE* ByteStream::open() {
    std::FILE* const stream = ::fopencookie(this, "r", {readCookie, nullptr, nullptr, nullptr});
    if (stream == nullptr) raise();
    std::setvbuf(stream, buffer_.get(), _IOFBF, bufferBytes);
    return stream;
}

/// No exception may pass through the C library.
ssize_t ByteStream::readCookie(void* cookie, char* to, std::size_t size) {
    auto& self = *static_cast<ByteStream*>(cookie);
    auto* const bytes = reinterpret_cast<U8*>(to);
    try {
        return static_cast<ssize_t>(self.decompressor_ ? self.decompressor_->read(bytes, size)
                                                       : self.raw_.read(bytes, size));
    } catch (const std::exception& failure) {
        self.error_ = failure.what();
        errno = EIO;
        return -1;
    }
}

}  // namespace DhcpTool
