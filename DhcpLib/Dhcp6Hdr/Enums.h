#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// DHCPv6 message types (RFC 8415, section 7.3). One byte on the wire.
enum class Dhcp6MsgType : U32 {
    solicit = 1,
    advertise = 2,
    request = 3,
    confirm = 4,
    renew = 5,
    rebind = 6,
    reply = 7,
    release = 8,
    decline = 9,
    reconfigure = 10,
    infoRequest = 11,
    relayForward = 12,
    relayReply = 13,
};

/// Whether messages of this type have the header of relay messages (RFC 8415, section 9).
constexpr bool isDhcp6RelayMsg(Dhcp6MsgType type) {
    return type == Dhcp6MsgType::relayForward || type == Dhcp6MsgType::relayReply;
}

/// The DHCPv6 option codes that have a name here (RFC 8415, 4649, 5970, 6607, 6939). Options with other codes are
/// handled by number. Two bytes on the wire.
enum class Dhcp6OptionType : U32 {
    clientId = 1,  ///< a DUID
    serverId = 2,  ///< a DUID
    iana = 3,      ///< identity association for non-temporary addresses
    iata = 4,      ///< identity association for temporary addresses
    iaAddress = 5,
    optRequest = 6,
    preference = 7,
    elapsedTime = 8,
    relayMsg = 9,
    auth = 11,
    serUnicast = 12,
    statusCode = 13,
    rapidCommit = 14,
    userClass = 15,
    vendorClass = 16,
    vendorOpts = 17,  ///< vendor-specific information
    interfaceId = 18,
    reconfMsg = 19,
    reconfAccept = 20,
    iapd = 25,  ///< identity association for prefix delegation
    iaPrefix = 26,
    remoteId = 37,  ///< relay agent remote-id
    bootfileUrl = 59,
    bootfileParam = 60,
    vss = 68,            ///< virtual subnet selection
    linkLayerAddr = 79,  ///< client link-layer address
};

/// Codes of the elements of an interface-id.
enum class Dhcp6InterfaceIdCode : U8 {
    intfName = 1,
    vrfName = 2,
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
    ccapCoresOpt = 61,
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
