#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "Kcore/FileDescriptor.h"
#include "Kcore/Types.h"

namespace DhcpTool {

using Kcore::U64;
using Kcore::U8;

class StopSignal;
class Decompressor;

/// The bytes of a file, of which some may have been read already to recognise its format.
class RawFile {
public:
    /// "-" is the standard input. Throws std::system_error if the file cannot be opened.
    RawFile(const std::string& path, const StopSignal* stop);

    /// Reads up to `size` bytes into `to`. Returns their number; 0 at the end, and once `stop` was signalled. Throws
    /// std::system_error.
    std::size_t read(U8* to, std::size_t size);
    /// The first four bytes as a big-endian number, which read() returns as well; 0 if there are fewer.
    Kcore::U32 magic();

    int fd() const { return fd_.get(); }
    /// Number of bytes read so far.
    U64 position() const { return position_; }

private:
    void awaitData() const;

    Kcore::FileDescriptor fd_;
    const StopSignal* stop_;
    U64 position_ = 0;
    U8 head_[4];
    std::size_t headBytes_ = 0, headTaken_ = 0;
};

/// A file as a stream of the C library. A file that is compressed with gzip or zstd is decompressed. Uses a fixed
/// amount of memory, whatever the file holds.
class ByteStream {
public:
    /// As RawFile. Once `stop` was signalled the stream ends.
    ByteStream(const std::string& path, const StopSignal* stop);
    ~ByteStream();
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;

    /// A stream that reads from this object. The caller closes it before this object is destroyed.
    std::FILE* open();

    const RawFile& raw() const { return raw_; }
    /// Why the last read failed; empty if it did not, or at the end.
    const std::string& error() const { return error_; }

private:
    static ssize_t readCookie(void* cookie, char* to, std::size_t size);

    RawFile raw_;
    std::unique_ptr<Decompressor> decompressor_;  // null: the file is not compressed
    std::unique_ptr<char[]> buffer_;
    std::string error_;
};

}  // namespace DhcpTool
