#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// Why a snooping parser refused a frame. Both parsers use this enumeration. The order follows the stages of a parse.
enum class FrameRejection : U8 {
    none,                 ///< accepted, or nothing was parsed yet
    portNotConfigured,    ///< the bridging configuration has no entry for the receiving interface
    shortEthernetHeader,  ///< less than 14 bytes, or 18 with a tag in the frame
    reservedVlan,         ///< a tag with VLAN 4095; the parse threw Kcore::RangeException
    notIp,                ///< the EtherType is not IPv4 (PacketParser) or IPv6 (Dhcp6PacketParser)
    shortIpHeader,        ///< fewer bytes than the IP header needs
    notUdp,               ///< another IP protocol, or an IPv6 extension header
    shortUdpHeader,       ///< less than 8 bytes of UDP header
    notDhcpPort,          ///< the destination port is neither of the protocol's two
    shortMessageHeader,   ///< less than 34 bytes of BOOTP header, or 4 of DHCPv6 header
    noOptionSpace,        ///< DHCPv4: the packet ends at or in front of the magic cookie
    noEndOption,          ///< DHCPv4: a walk over the options does not reach an end option
    relayMessage,         ///< DHCPv6: a relay-forward or relay-reply, which Dhcp6PacketParser does not unwrap
    unknownMessageType,   ///< DHCPv6: message type 0 or above 13
};

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::FrameRejection> {
    using enum DhcpLib::FrameRejection;
    static constexpr std::string_view name = "FrameRejection";
    static constexpr EnumMember<DhcpLib::FrameRejection> members[] = {
        {none, "none"},
        {portNotConfigured, "portNotConfigured"},
        {shortEthernetHeader, "shortEthernetHeader"},
        {reservedVlan, "reservedVlan"},
        {notIp, "notIp"},
        {shortIpHeader, "shortIpHeader"},
        {notUdp, "notUdp"},
        {shortUdpHeader, "shortUdpHeader"},
        {notDhcpPort, "notDhcpPort"},
        {shortMessageHeader, "shortMessageHeader"},
        {noOptionSpace, "noOptionSpace"},
        {noEndOption, "noEndOption"},
        {relayMessage, "relayMessage"},
        {unknownMessageType, "unknownMessageType"},
    };
};

namespace DhcpLib {

inline FrameRejection FrameRejectionInstance(unsigned number) { return Kcore::enumInstance<FrameRejection>(number); }
inline FrameRejection FrameRejectionInstance(const Kcore::String& name) {
    return Kcore::enumInstance<FrameRejection>(name);
}

}  // namespace DhcpLib
