#pragma once

#include <string>

#include "Kcore/Ptr.h"
#include "Kitnet/Pkt.h"
#include "Message.h"

namespace DhcpBench {

/// A frame in the two shapes that the contenders take; making a packet is the receiver's work and not measured.
struct Input {
    Octets frame;
    Kcore::Ptr<Kitnet::Pkt> pkt;
    U32 messageAt = 0;  ///< where the BOOTP header starts

    const U8* message() const { return frame.data() + messageAt; }
    U32 messageBytes() const { return static_cast<U32>(frame.size()) - messageAt; }
};

/// Frames that are measured together, one after the other.
struct Case {
    std::string name;
    std::vector<Input> inputs;
};

/// One frame of each kind, 512 mixed ones (more than a branch predictor can learn by heart), 252 options, 1,100 pads.
const std::vector<Case>& typicalCases();
/// Frames of 5 to 250 small options.
const std::vector<Case>& growingCases();
/// A case of typicalCases().
const Case& caseOf(std::string_view name);

}  // namespace DhcpBench
