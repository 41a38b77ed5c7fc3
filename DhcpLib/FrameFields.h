#pragma once

#include "Bridging/Config.h"
#include "DhcpLib/Constants.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpGenAddr.h"

namespace DhcpLib {

/// Fields that both snooping parsers read from an Ethernet header.
struct EthernetFields {
    U16 etherType = 0;        ///< of the payload; in a tagged frame the one after the tag
    Kitnet::EthAddr srcMac;   ///< source
    Kitnet::EthAddr dstMac;   ///< destination
    bool tagged = false;      ///< with a tag of TPID 0x8100; never on a tunnel port
    Bridging::VlanId vlanId;  ///< of the tag if it is not 0, else the native VLAN
    U32 etherHdrLen = 0;      ///< 14, or 18 if the tag is in the frame
};

/// The UDP ports of a frame.
struct UdpPorts {
    Kitnet::UdpPort src;  ///< source
    Kitnet::UdpPort dst;  ///< destination
};

/// IP protocol number of UDP (RFC 768).
inline constexpr U8 udpProtocol = 17;
inline constexpr U32 udpHeaderBytes = 8;  ///< size of a UDP header

}  // namespace DhcpLib
