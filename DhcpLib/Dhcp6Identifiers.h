#pragma once

#include "Bridging/VlanId.h"
#include "DhcpLib/Dhcp6Hdr/Nested.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IntfId.h"

namespace DhcpLib {

/// Position and length of an option in a packet.
struct Dhcp6OptionPlace {
    bool present = false;  ///< whether the message has the option
    U16 len = 0;           ///< the option's length field: bytes of data
    U32 offset = 0;        ///< position of the option's code in the packet
};

/// The decoded client identifier of a message (option 1, RFC 8415, section 21.2). Fields that its DUID type does not
/// have are zero or empty. The DUID fields are set if the type is DUID-EN (2) or the length is 10, 14 or 18: an
/// Ethernet DUID-LL or DUID-LLT, or a DUID-UUID.
struct Dhcp6ClientIdentifier {
    Dhcp6OptionPlace option;     ///< where the option is
    U16 duidType = 0;            ///< 1 to 4 (RFC 8415, section 11; RFC 6355)
    U16 duidHwType = 0;          ///< of a DUID-LL or DUID-LLT; 1 is Ethernet
    Kitnet::EthAddr duidllAddr;  ///< of a DUID-LL or DUID-LLT
    U32 duidEntno = 0;           ///< of a DUID-EN
    Kcore::String duidUuid;      ///< of a DUID-UUID: 16 bytes
    Kcore::String duidEntId;     ///< of a DUID-EN
};

/// Result of decoding the interface and VLAN in a remote-id: the text "<interface>:<VLAN>" in a sub-option of type 1.
enum class Dhcp6PortInfo : U8 {
    decoded,           ///< interface and VLAN are valid
    noPortText,        ///< no sub-option, or one of another type
    noColon,           ///< no ':' in the text
    colonAtEdge,       ///< the text starts or ends with ':'
    invalidVlan,       ///< not 1 to 4094
    invalidInterface,  ///< not a valid interface name
};

/// The relay agent remote-id of a message (option 37, RFC 4649), read in the layout of Dhcp6RemoteId, whatever the
/// sender used.
struct Dhcp6RemoteIdentifier {
    Dhcp6OptionPlace option;                             ///< where the option is
    U32 entno = 0;                                       ///< IANA enterprise number
    U16 duidType = 0;                                    ///< 1 to 4 (RFC 8415, section 11; RFC 6355)
    U16 duidHwType = 0;                                  ///< 1 is Ethernet
    Kitnet::EthAddr duidllAddr;                          ///< the MAC address in the DUID
    U64 l3IntfId = 0;                                    ///< number of the layer 3 interface
    Kitnet::IntfId l2IntfId;                             ///< valid if `portInfo` is `decoded`
    Bridging::VlanId vlanId;                             ///< valid if `portInfo` is `decoded`
    Dhcp6PortInfo portInfo = Dhcp6PortInfo::noPortText;  ///< result of decoding `l2IntfId` and `vlanId`

    /// Whether `l2IntfId` and `vlanId` are valid.
    bool l2PortInfoValid() const { return portInfo == Dhcp6PortInfo::decoded; }
};

/// Decodes the option `opt`, whatever its code, as a client identifier. Bytes past the option's data or the
/// packet's end read as 0. A null `opt` gives the result for an absent option. Nothing is traced.
DHCPLIB_EXPORT Dhcp6ClientIdentifier dhcp6ClientIdentifier(const Dhcp6OptionPtr& opt);
/// As dhcp6ClientIdentifier(), for a remote-id.
DHCPLIB_EXPORT Dhcp6RemoteIdentifier dhcp6RemoteIdentifier(const Dhcp6OptionPtr& opt);

/// The client identifier and the remote-id of a message.
struct Dhcp6Identifiers {
    Dhcp6ClientIdentifier clientId;  ///< option 1
    Dhcp6RemoteIdentifier remoteId;  ///< option 37
};

/// Reads both identifiers of the client/server or relay message at `message`; no frame around it is needed. The first
/// option of a code counts. Options that pass the message's end are ignored. Unlike Dhcp6PacketParser::doParseDhcp6 it
/// also reads the remote-id of a message without a client identifier.
DHCPLIB_EXPORT Dhcp6Identifiers dhcp6Identifiers(const PktPtr& pkt, const Dhcp6MessagePlace& message);

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::Dhcp6PortInfo> {
    using enum DhcpLib::Dhcp6PortInfo;
    static constexpr std::string_view name = "Dhcp6PortInfo";
    static constexpr EnumMember<DhcpLib::Dhcp6PortInfo> members[] = {
        {decoded, "decoded"},         {noPortText, "noPortText"},   {noColon, "noColon"},
        {colonAtEdge, "colonAtEdge"}, {invalidVlan, "invalidVlan"}, {invalidInterface, "invalidInterface"},
    };
};

namespace DhcpLib {

inline Dhcp6PortInfo Dhcp6PortInfoInstance(unsigned number) { return Kcore::enumInstance<Dhcp6PortInfo>(number); }
inline Dhcp6PortInfo Dhcp6PortInfoInstance(const Kcore::String& name) {
    return Kcore::enumInstance<Dhcp6PortInfo>(name);
}

}  // namespace DhcpLib
