#pragma once

#include "DhcpLib/Wire.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

/// The contents of an Ethernet frame and their positions.
struct UdpFrame {
    enum class Kind : U8 {
        other,     ///< not IPv4, not UDP, or not a DHCP port
        unfit,     ///< may contain a message that is incomplete: see `why`
        datagram,  ///< a complete datagram for a DHCPv4 port
    };
    Kind kind = Kind::other;
    const char* why = "";
    U32 ipAt = 0;
    U32 payloadAt = 0;
    U32 payloadBytes = 0;
};

/// Finds a DHCPv4 datagram after any number of VLAN tags and any IP options.
UdpFrame udpFrameOf(DhcpLib::Wire::ByteView frame);

}  // namespace DhcpTool
