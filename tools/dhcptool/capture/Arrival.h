#pragma once

#include "Kitnet/IntfId.h"
#include "Kitnet/Pkt.h"
#include "capture/Capture.h"

namespace DhcpTool {

/// A frame as a snooping agent receives it.
struct Arrival {
    U64 number = 0;  ///< counted from 1
    CaptureTime time{};
    Kcore::Ptr<Kitnet::Pkt> pkt;  ///< the captured bytes
    U32 sentBytes = 0;            ///< more than were captured if the snap length cut the frame
    Kitnet::IntfId intf;
    U32 ifIndex = 0;        ///< number of the interface on the host that captured the frame; 0 if it is not known
    bool live = false;      ///< from an interface of this host
    bool outgoing = false;  ///< this host sent it
};

}  // namespace DhcpTool
