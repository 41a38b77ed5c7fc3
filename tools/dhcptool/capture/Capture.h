#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include "Kcore/Types.h"

struct pcap;

namespace DhcpTool {

using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// Time since the epoch.
using CaptureTime = std::chrono::duration<std::int64_t, std::micro>;

/// A frame of a capture. Its bytes are valid until the next one is read.
struct Frame {
    U64 number;  ///< counted from 1
    CaptureTime time;
    std::span<const U8> bytes;  ///< the captured bytes, which may be fewer than were sent
    U32 sentBytes;
};

/// Thrown if a capture cannot be read, or not to its end. The message names the file and is safe to print on a
/// terminal.
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the Ethernet frames of a pcap or pcapng file one by one.
class CaptureReader {
public:
    /// "-" is the standard input. Pipes are supported. Throws CaptureError if there is no such file, if it is not a
    /// capture, or if its link type is not Ethernet.
    explicit CaptureReader(const std::string& path);

    /// The next frame, or none at the end. Throws CaptureError if the file ends within a frame or is malformed; frames
    /// read before are valid.
    std::optional<Frame> next();

    /// Size of the file; 0 if it has none, such as a pipe.
    U64 size() const { return size_; }
    /// Number of bytes read so far.
    U64 position() const;
    /// Whether `path` refers to the same file.
    bool reads(const std::string& path) const;

private:
    struct Close {
        void operator()(pcap* handle) const;
    };

    std::string path_;
    std::unique_ptr<pcap, Close> handle_;
    U64 frames_ = 0;
    U64 size_ = 0;
};

}  // namespace DhcpTool
