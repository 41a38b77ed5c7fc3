#pragma once

#include "capture/CaptureWriter.h"
#include "filter/Filter.h"
#include "message/Decoder.h"
#include "snoop/SnoopCounts.h"
#include "snoop/TraceLines.h"
#include "view/View.h"

namespace DhcpTool {

/// Settings of the snooping.
struct SnoopSettings {
    Ports ports;
    std::optional<int> traceLevel;
    bool keepState = false;    ///< one parser for all frames, as in some agents
    bool onlyRefused = false;  ///< print the refused DHCP frames alone
    Filter filter;
    ViewSettings view;
};

/// Decodes frames, counts them, and prints the messages that pass the filter.
class Snooper {
public:
    /// `target`: a file for the frames of the printed messages; may be null.
    Snooper(const SnoopSettings& settings, Output& output, CaptureWriter* target);

    /// Returns whether it printed the frame's message. Throws OutputError.
    bool take(const Arrival& frame);
    /// Writes the lines that are still in memory. Throws OutputError.
    void flush();
    U64 printed() const { return printed_; }
    std::string countsText() const;

private:
    bool isWanted(const Message& message) const;

    const SnoopSettings settings_;
    Output& output_;
    CaptureWriter* const target_;
    Decoder decoder_;
    const std::unique_ptr<View> view_;
    TraceLines trace_;
    SnoopCounts counts_;
    U64 printed_ = 0;
    std::string lines_;
};

}  // namespace DhcpTool
