#pragma once

#include "DhcpLib/Wire.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

/// What an Ethernet frame holds, and where.
struct UdpFrame {
    enum class Kind : U8 {
        other,     ///< no IPv4, no UDP, or ports that are not DHCP's
        unfit,     ///< may hold a message of which not all is there: `why`
        datagram,  ///< a whole datagram for a DHCPv4 port
    };
    Kind kind = Kind::other;
    const char* why = "";
    U32 ipAt = 0;
    U32 payloadAt = 0;
    U32 payloadBytes = 0;
};

/// Looks for a DHCPv4 datagram behind any number of VLAN tags and behind IP options.
UdpFrame udpFrameOf(DhcpLib::Wire::ByteView frame);

}  // namespace DhcpTool
