#pragma once

#include "Kitnet/IntfId.h"
#include "Kitnet/Pkt.h"
#include "common/Capture.h"

namespace DhcpTool {

/// A frame as a snooping agent receives it.
struct Arrival {
    U64 number = 0;  ///< counted from 1
    CaptureTime time{};
    Kcore::Ptr<Kitnet::Pkt> pkt;
    Kitnet::IntfId intf;
    bool live = false;      ///< from an interface of this host
    bool outgoing = false;  ///< this host sent it
};

}  // namespace DhcpTool
