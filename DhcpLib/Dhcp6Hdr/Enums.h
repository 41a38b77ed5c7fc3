#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// DHCPv6 message types (RFC 8415, section 7.3). One byte on the wire.
enum class Dhcp6MsgType : U32 {
    solicit = 1,        ///< client looks for servers
    advertise = 2,      ///< server offers a lease
    request = 3,        ///< client asks for what was offered
    confirm = 4,        ///< client asks whether its addresses fit the link
    renew = 5,          ///< client asks its server for an extension
    rebind = 6,         ///< client asks any server for an extension
    reply = 7,          ///< server answers
    release = 8,        ///< client gives up addresses
    decline = 9,        ///< client reports addresses that others use
    reconfigure = 10,   ///< server tells the client to ask again
    infoRequest = 11,   ///< client asks for options only
    relayForward = 12,  ///< relay agent sends a message on to a server
    relayReply = 13,    ///< server sends a message back through a relay agent
};

/// Whether messages of this type have the header of relay messages (RFC 8415, section 9).
constexpr bool isDhcp6RelayMsg(Dhcp6MsgType type) {
    return type == Dhcp6MsgType::relayForward || type == Dhcp6MsgType::relayReply;
}

/// The DHCPv6 option codes that have a name here (RFC 8415, 4649, 5970, 6607, 6939). Options with other codes are
/// handled by number. Two bytes on the wire.
enum class Dhcp6OptionType : U32 {
    clientId = 1,        ///< a DUID
    serverId = 2,        ///< a DUID
    iana = 3,            ///< identity association for non-temporary addresses
    iata = 4,            ///< identity association for temporary addresses
    iaAddress = 5,       ///< address in an IA_NA or IA_TA
    optRequest = 6,      ///< codes of options that the client wants
    preference = 7,      ///< preference of a server, 0 to 255
    elapsedTime = 8,     ///< since the client began, 1/100 s
    relayMsg = 9,        ///< the relayed message
    auth = 11,           ///< authentication
    serUnicast = 12,     ///< address to which the client may send unicast
    statusCode = 13,     ///< status code and text
    rapidCommit = 14,    ///< request for an answer in two messages
    userClass = 15,      ///< user classes of the client
    vendorClass = 16,    ///< vendor class of the client
    vendorOpts = 17,     ///< vendor-specific information
    interfaceId = 18,    ///< client interface of the relay agent
    reconfMsg = 19,      ///< type with which to answer a reconfigure
    reconfAccept = 20,   ///< client accepts a reconfigure
    iapd = 25,           ///< identity association for prefix delegation
    iaPrefix = 26,       ///< prefix in an IA_PD
    remoteId = 37,       ///< relay agent remote-id
    bootfileUrl = 59,    ///< URL of the boot file (RFC 5970)
    bootfileParam = 60,  ///< parameters for it (RFC 5970)
    vss = 68,            ///< virtual subnet selection
    linkLayerAddr = 79,  ///< client link-layer address
};

/// Codes of the elements of an interface-id.
enum class Dhcp6InterfaceIdCode : U8 {
    intfName = 1,    ///< interface name
    vrfName = 2,     ///< VRF name
    srcVtepIp = 3,   ///< 4 or 16 bytes
    srcVtepMac = 4,  ///< 6 bytes
};

/// Layouts of a remote-id, and the view for each.
enum class Dhcp6RemoteIdFormat : U8 {
    intfIdFormat = 0,           ///< Dhcp6RemoteId
    intfNameFormat = 1,         ///< Dhcp6RemoteIdIntfName
    hostAndIntfNameFormat = 2,  ///< Dhcp6RemoteIdHostAndIntfName
};

/// The CableLabs sub-option codes that have a name here. Two bytes on the wire.
enum class CableLabsSubOptionType : U32 {
    ccapCoresOpt = 61,  ///< IPv6 addresses of CCAP cores, 16 bytes each
};

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::Dhcp6MsgType> {
    using enum DhcpLib::Dhcp6MsgType;
    static constexpr std::string_view name = "Dhcp6MsgType";
    static constexpr EnumMember<DhcpLib::Dhcp6MsgType> members[] = {
        {solicit, "solicit"},
        {advertise, "advertise"},
        {request, "request"},
        {confirm, "confirm"},
        {renew, "renew"},
        {rebind, "rebind"},
        {reply, "reply"},
        {release, "release"},
        {decline, "decline"},
        {reconfigure, "reconfigure"},
        {infoRequest, "infoRequest"},
        {relayForward, "relayForward"},
        {relayReply, "relayReply"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::Dhcp6OptionType> {
    using enum DhcpLib::Dhcp6OptionType;
    static constexpr std::string_view name = "Dhcp6OptionType";
    static constexpr EnumMember<DhcpLib::Dhcp6OptionType> members[] = {
        {clientId, "clientId"},
        {serverId, "serverId"},
        {iana, "iana"},
        {iata, "iata"},
        {iaAddress, "iaAddress"},
        {optRequest, "optRequest"},
        {preference, "preference"},
        {elapsedTime, "elapsedTime"},
        {relayMsg, "relayMsg"},
        {auth, "auth"},
        {serUnicast, "serUnicast"},
        {statusCode, "statusCode"},
        {rapidCommit, "rapidCommit"},
        {userClass, "userClass"},
        {vendorClass, "vendorClass"},
        {vendorOpts, "vendorOpts"},
        {interfaceId, "interfaceId"},
        {reconfMsg, "reconfMsg"},
        {reconfAccept, "reconfAccept"},
        {iapd, "iapd"},
        {iaPrefix, "iaPrefix"},
        {remoteId, "remoteId"},
        {bootfileUrl, "bootfileUrl"},
        {bootfileParam, "bootfileParam"},
        {vss, "vss"},
        {linkLayerAddr, "linkLayerAddr"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::Dhcp6InterfaceIdCode> {
    using enum DhcpLib::Dhcp6InterfaceIdCode;
    static constexpr std::string_view name = "Dhcp6InterfaceIdCode";
    static constexpr EnumMember<DhcpLib::Dhcp6InterfaceIdCode> members[] = {
        {intfName, "intfName"},
        {vrfName, "vrfName"},
        {srcVtepIp, "srcVtepIp"},
        {srcVtepMac, "srcVtepMac"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::Dhcp6RemoteIdFormat> {
    using enum DhcpLib::Dhcp6RemoteIdFormat;
    static constexpr std::string_view name = "Dhcp6RemoteIdFormat";
    static constexpr EnumMember<DhcpLib::Dhcp6RemoteIdFormat> members[] = {
        {intfIdFormat, "intfIdFormat"},
        {intfNameFormat, "intfNameFormat"},
        {hostAndIntfNameFormat, "hostAndIntfNameFormat"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::CableLabsSubOptionType> {
    using enum DhcpLib::CableLabsSubOptionType;
    static constexpr std::string_view name = "CableLabsSubOptionType";
    static constexpr EnumMember<DhcpLib::CableLabsSubOptionType> members[] = {
        {ccapCoresOpt, "ccapCoresOpt"},
    };
};

namespace DhcpLib {

inline Dhcp6MsgType Dhcp6MsgTypeInstance(unsigned number) { return Kcore::enumInstance<Dhcp6MsgType>(number); }
inline Dhcp6MsgType Dhcp6MsgTypeInstance(const Kcore::String& name) { return Kcore::enumInstance<Dhcp6MsgType>(name); }
inline Dhcp6OptionType Dhcp6OptionTypeInstance(unsigned number) { return Kcore::enumInstance<Dhcp6OptionType>(number); }
inline Dhcp6OptionType Dhcp6OptionTypeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<Dhcp6OptionType>(name);
}
inline Dhcp6InterfaceIdCode Dhcp6InterfaceIdCodeInstance(unsigned number) {
    return Kcore::enumInstance<Dhcp6InterfaceIdCode>(number);
}
inline Dhcp6InterfaceIdCode Dhcp6InterfaceIdCodeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<Dhcp6InterfaceIdCode>(name);
}
inline Dhcp6RemoteIdFormat Dhcp6RemoteIdFormatInstance(unsigned number) {
    return Kcore::enumInstance<Dhcp6RemoteIdFormat>(number);
}
inline Dhcp6RemoteIdFormat Dhcp6RemoteIdFormatInstance(const Kcore::String& name) {
    return Kcore::enumInstance<Dhcp6RemoteIdFormat>(name);
}
inline CableLabsSubOptionType CableLabsSubOptionTypeInstance(unsigned number) {
    return Kcore::enumInstance<CableLabsSubOptionType>(number);
}
inline CableLabsSubOptionType CableLabsSubOptionTypeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<CableLabsSubOptionType>(name);
}

}  // namespace DhcpLib
