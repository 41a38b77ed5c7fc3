#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// The `op` byte of the BOOTP header (RFC 2131, section 2).
enum class BootpOpType : U8 { bootpOpUnknown = 0, bootpReq = 1, bootpRep = 2 };

/// The DHCPv4 option codes that have a name here (RFC 2132, 3046, 4388). Options with other codes are handled by
/// number.
enum class DhcpOptionType : U32 {
    padOpt = 0,
    hostName = 12,
    requestIpOpt = 50,
    leaseTimeOpt = 51,
    msgType = 53,
    serverIdOpt = 54,
    parareqOpt = 55,
    maxMsgSize = 57,
    classIdOpt = 60,
    infoOpt = 82,
    lastTxTimeOpt = 91,
    associatedIpOpt = 92,
    endOpt = 255,
};

/// Sub-option codes of the relay agent information option (RFC 3046, 3527, 4243, 5107, 6607).
enum class DhcpInformationSubOptionType : U32 {
    circuitId = 1,
    remoteIdOpt = 2,
    linkSelectionId = 5,
    vendorSpecificSubOption = 9,
    serverIdOverride = 11,
    vpnId = 151,
    vssControl = 152,
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
