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

/// Since the epoch.
using CaptureTime = std::chrono::duration<std::int64_t, std::micro>;

/// A frame of a capture. Its bytes live until the next one is read.
struct Frame {
    U64 number;  ///< counted from 1
    CaptureTime time;
    std::span<const U8> bytes;  ///< what the capture holds, which may be less than what was sent
    U32 sentBytes;
};

/// A capture that cannot be read, or not any further. The message names the file and is fit for a terminal.
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the Ethernet frames of a pcap or pcapng file one by one.
class CaptureReader {
public:
    /// "-" is the standard input; pipes will do. Raises CaptureError where there is no such file, where it is no
    /// capture, or one of another link type.
    explicit CaptureReader(const std::string& path);

    /// The next frame, or none at the end. Raises CaptureError where the file ends or makes no sense amid a frame:
    /// those before it are good.
    std::optional<Frame> next();

    /// The size of the file; 0 where it has none, such as a pipe.
    U64 size() const { return size_; }
    /// How much of it was read so far.
    U64 position() const;
    /// Whether `path` names the very file, by whatever name.
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
