#pragma once

#include <string>

#include "Kcore/Ptr.h"
#include "Kitnet/Pkt.h"
#include "Message.h"

namespace DhcpBench {

/// A frame in the two forms that the contenders take. Creating the packet is not measured: the receiver has to do it.
struct Input {
    Octets frame;
    Kcore::Ptr<Kitnet::Pkt> pkt;
    U32 messageAt = 0;  ///< where the BOOTP header starts

    const U8* message() const { return frame.data() + messageAt; }
    U32 messageBytes() const { return static_cast<U32>(frame.size()) - messageAt; }
};

/// Frames that are measured as a group, one after the other.
struct Case {
    std::string name;
    std::vector<Input> inputs;
};

/// Cases: one frame of each kind, 512 mixed frames (too many for the branch predictor to learn), 252 options, 1,100
/// pads.
const std::vector<Case>& typicalCases();
/// Cases with 5 to 250 small options.
const std::vector<Case>& growingCases();
/// The case of typicalCases() with this name.
const Case& caseOf(std::string_view name);

}  // namespace DhcpBench
