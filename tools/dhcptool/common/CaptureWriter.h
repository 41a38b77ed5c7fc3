#pragma once

#include "Kitnet/Pkt.h"
#include "common/Capture.h"
#include "common/Output.h"

struct pcap_dumper;

namespace DhcpTool {

/// Writes Ethernet frames to a pcap file. A reader that goes away is no error: `open` turns false.
class CaptureWriter {
public:
    /// "-" is the standard output; pipes will do. `live`: each frame is handed on at once. Raises OutputError where
    /// there is no such place.
    CaptureWriter(const std::string& path, bool live);

    /// A frame of these bytes, of which `sentBytes` were sent. Raises OutputError.
    void write(CaptureTime time, std::span<const U8> bytes, U32 sentBytes);
    /// A frame as it was sent: with the tag that it was delivered beside.
    void write(CaptureTime time, const Kitnet::Pkt& frame);
    /// Hands on what is held back. Raises OutputError.
    void flush();
    bool open() const { return output_.open(); }

private:
    struct Close {
        void operator()(pcap_dumper* file) const;
    };

    std::unique_ptr<pcap_dumper, Close> file_;
    Output output_;
    bool live_;
};

}  // namespace DhcpTool
