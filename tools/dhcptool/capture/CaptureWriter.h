#pragma once

#include "capture/Arrival.h"
#include "common/Output.h"
#include "common/Printable.h"

struct pcap_dumper;

namespace DhcpTool {

/// Throws OutputError if the file `target`, which is going to be overwritten, is one that `source` reads.
template <class Source>
void checkTarget(const Source& source, const std::string& target) {
    if (source.reads(target)) throw OutputError(quotedText(target) + " is the capture that is being read");
}

/// Writes Ethernet frames to a pcap file. If the reader closes the pipe, `open` becomes false; that is not an error.
class CaptureWriter {
public:
    /// "-" is the standard output. Pipes are supported. `live`: flushes after each frame.
    /// `nanoseconds`: the file has times in nanoseconds, not in microseconds. Throws OutputError if the file cannot be
    /// opened.
    CaptureWriter(const std::string& path, bool live, bool nanoseconds = true);

    /// Writes a frame of which `sentBytes` were sent and `bytes` were captured. Of a frame that is too long for a pcap
    /// file, the first 256 KiB are written. Throws OutputError.
    void write(CaptureTime time, std::span<const U8> bytes, U32 sentBytes);
    /// Writes a frame as it was sent: with its out-of-band tag put back.
    void write(const Arrival& frame);
    /// Flushes buffered frames. Throws OutputError.
    void flush();
    bool open() const { return output_.open(); }

private:
    struct Close {
        void operator()(pcap_dumper* file) const;
    };

    std::unique_ptr<pcap_dumper, Close> file_;
    Output output_;
    bool live_;
    bool nanoseconds_;
};

}  // namespace DhcpTool
