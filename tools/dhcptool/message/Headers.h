#pragma once

#include "DhcpLib/FrameFields.h"
#include "Kitnet/IpGenAddr.h"
#include "Kitnet/Pkt.h"
#include "message/Item.h"

namespace DhcpTool {

/// The headers in front of a DHCP message, whatever a snooping agent makes of the frame: read after all VLAN tags and
/// IPv6 extension headers. Fields that are not in the frame are zero.
struct Headers {
    Kitnet::EthAddr srcMac, dstMac;
    bool ipv6 = false;
    Kitnet::IpGenAddr srcIp, dstIp;
    DhcpLib::UdpPorts ports;
    bool toDhcpPort = false;     ///< UDP to port 67 or 68 (IPv4), 546 or 547 (IPv6); false for a later IP fragment
    U32 laterFragmentAt = 0;     ///< IPv4: position of the fragment offset if it is not 0
    bool firstFragment = false;  ///< the rest of the datagram is in other frames
    U32 messageAt = 0;           ///< position of the UDP payload
    U32 messageEnd = 0;          ///< end of the datagram by its UDP length, or of the frame if that is implausible
};

Headers readHeaders(const Kitnet::Pkt& frame);

}  // namespace DhcpTool
