#pragma once

#include <unistd.h>

#include <utility>

namespace Kcore {

/// Owns a file descriptor and closes it when destroyed. -1 if there is none.
class FileDescriptor {
public:
    /// Takes over `fd`, which may be -1.
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }

    /// The descriptor; -1 if there is none.
    int get() const { return fd_; }
    /// Whether there is a descriptor.
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_;
};

}  // namespace Kcore
