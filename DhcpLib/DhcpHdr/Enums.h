#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// The `op` byte of the BOOTP header (RFC 2131, section 2).
enum class BootpOpType : U8 { bootpOpUnknown = 0, bootpReq = 1, bootpRep = 2 };

/// The DHCPv4 option codes that have a name here (RFC 2132, 3046, 4388). Options with other codes are handled by
/// number.
enum class DhcpOptionType : U32 {
    padOpt = 0,            ///< pad: a single byte
    hostName = 12,         ///< host name
    requestIpOpt = 50,     ///< requested IP address
    leaseTimeOpt = 51,     ///< IP address lease time, s
    msgType = 53,          ///< DHCP message type
    serverIdOpt = 54,      ///< server identifier
    parareqOpt = 55,       ///< parameter request list
    maxMsgSize = 57,       ///< maximum DHCP message size
    classIdOpt = 60,       ///< vendor class identifier
    infoOpt = 82,          ///< relay agent information: "option 82"
    lastTxTimeOpt = 91,    ///< client last transaction time, s (RFC 4388)
    associatedIpOpt = 92,  ///< associated IP addresses (RFC 4388)
    endOpt = 255,          ///< end: a single byte
};

/// Sub-option codes of the relay agent information option (RFC 3046, 3527, 4243, 5107, 6607).
enum class DhcpInformationSubOptionType : U32 {
    circuitId = 1,                ///< circuit-id (RFC 3046)
    remoteIdOpt = 2,              ///< remote-id (RFC 3046)
    linkSelectionId = 5,          ///< link selection (RFC 3527)
    vendorSpecificSubOption = 9,  ///< vendor-specific information (RFC 4243)
    serverIdOverride = 11,        ///< server identifier override (RFC 5107)
    vpnId = 151,                  ///< virtual subnet selection: the VRF name (RFC 6607)
    vssControl = 152,             ///< virtual subnet selection control (RFC 6607)
};

/// Codes of the data items in the own block of the vendor-specific sub-option.
enum class DhcpVendorSpecificDataType : U32 { interfaceName = 1, sourceVtepIp = 2 };

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::BootpOpType> {
    using enum DhcpLib::BootpOpType;
    static constexpr std::string_view name = "BootpOpType";
    static constexpr EnumMember<DhcpLib::BootpOpType> members[] = {
        {bootpOpUnknown, "bootpOpUnknown"}, {bootpReq, "bootpReq"}, {bootpRep, "bootpRep"}};
};

template <>
struct Kcore::EnumTable<DhcpLib::DhcpOptionType> {
    using enum DhcpLib::DhcpOptionType;
    static constexpr std::string_view name = "DhcpOptionType";
    static constexpr EnumMember<DhcpLib::DhcpOptionType> members[] = {
        {padOpt, "padOpt"},
        {hostName, "hostName"},
        {requestIpOpt, "requestIpOpt"},
        {leaseTimeOpt, "leaseTimeOpt"},
        {msgType, "msgType"},
        {serverIdOpt, "serverIdOpt"},
        {parareqOpt, "parareqOpt"},
        {maxMsgSize, "maxMsgSize"},
        {classIdOpt, "classIdOpt"},
        {infoOpt, "infoOpt"},
        {lastTxTimeOpt, "lastTxTimeOpt"},
        {associatedIpOpt, "associatedIpOpt"},
        {endOpt, "endOpt"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::DhcpInformationSubOptionType> {
    using enum DhcpLib::DhcpInformationSubOptionType;
    static constexpr std::string_view name = "DhcpInformationSubOptionType";
    static constexpr EnumMember<DhcpLib::DhcpInformationSubOptionType> members[] = {
        {circuitId, "circuitId"},
        {remoteIdOpt, "remoteIdOpt"},
        {linkSelectionId, "linkSelectionId"},
        {vendorSpecificSubOption, "vendorSpecificSubOption"},
        {serverIdOverride, "serverIdOverride"},
        {vpnId, "vpnId"},
        {vssControl, "vssControl"},
    };
};

template <>
struct Kcore::EnumTable<DhcpLib::DhcpVendorSpecificDataType> {
    using enum DhcpLib::DhcpVendorSpecificDataType;
    static constexpr std::string_view name = "DhcpVendorSpecificDataType";
    static constexpr EnumMember<DhcpLib::DhcpVendorSpecificDataType> members[] = {{interfaceName, "interfaceName"},
                                                                                  {sourceVtepIp, "sourceVtepIp"}};
};

namespace DhcpLib {

inline BootpOpType BootpOpTypeInstance(unsigned number) { return Kcore::enumInstance<BootpOpType>(number); }
inline BootpOpType BootpOpTypeInstance(const Kcore::String& name) { return Kcore::enumInstance<BootpOpType>(name); }
inline DhcpOptionType DhcpOptionTypeInstance(unsigned number) { return Kcore::enumInstance<DhcpOptionType>(number); }
inline DhcpOptionType DhcpOptionTypeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<DhcpOptionType>(name);
}
inline DhcpInformationSubOptionType DhcpInformationSubOptionTypeInstance(unsigned number) {
    return Kcore::enumInstance<DhcpInformationSubOptionType>(number);
}
inline DhcpInformationSubOptionType DhcpInformationSubOptionTypeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<DhcpInformationSubOptionType>(name);
}
inline DhcpVendorSpecificDataType DhcpVendorSpecificDataTypeInstance(unsigned number) {
    return Kcore::enumInstance<DhcpVendorSpecificDataType>(number);
}
inline DhcpVendorSpecificDataType DhcpVendorSpecificDataTypeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<DhcpVendorSpecificDataType>(name);
}

}  // namespace DhcpLib
