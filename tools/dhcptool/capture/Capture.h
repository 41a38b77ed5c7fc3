#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "capture/ByteStream.h"
#include "capture/LinkLayer.h"

struct pcap;

namespace DhcpTool {

/// Time since the epoch.
using CaptureTime = std::chrono::nanoseconds;

/// A frame of a capture. Its bytes are valid until the next one is read, and may be fewer than were sent.
struct Frame : EthernetFrame {
    U64 number = 0;  ///< counted from 1
    CaptureTime time{};
};

/// Thrown if a capture cannot be read, or not to its end. The message names the file and is safe to print on a
/// terminal.
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the frames of a pcap or pcapng file one by one. The file may be compressed with gzip or zstd. Frames of other
/// link types than Ethernet get an Ethernet header, see LinkLayer.
class CaptureReader {
public:
    /// "-" is the standard input. Pipes are supported. Once `stop` was signalled, the file is taken to end. Throws
    /// CaptureError if there is no such file, if it is not a capture, or if its link type is not supported.
    explicit CaptureReader(const std::string& path, const StopSignal* stop = nullptr);

    /// The next frame, or none at the end. Throws CaptureError if the file ends within a frame or is malformed; frames
    /// read before are valid.
    std::optional<Frame> next();

    /// Whether the file may have times in nanoseconds, not in microseconds.
    bool nanoseconds() const { return nanoseconds_; }
    /// Size of the file; 0 if it has none, such as a pipe.
    U64 size() const { return size_; }
    /// Number of bytes of the file that were read so far.
    U64 position() const { return stream_->raw().position(); }
    /// Whether `path` refers to the same file.
    bool reads(const std::string& path) const;

private:
    struct Close {
        void operator()(pcap* handle) const;
    };

    [[noreturn]] void fail(std::string_view why) const;
    bool stopped() const;
    void open();

    std::string path_;
    const StopSignal* stop_;
    std::unique_ptr<ByteStream> stream_;
    std::unique_ptr<pcap, Close> handle_;  // reads from `stream_`
    std::optional<LinkLayer> linkLayer_;
    U64 frames_ = 0;
    U64 size_ = 0;
    bool nanoseconds_ = false;
};

}  // namespace DhcpTool
