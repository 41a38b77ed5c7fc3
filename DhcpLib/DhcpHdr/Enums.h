#pragma once

#include "DhcpLib/Constants.h"
#include "Kitnet/NetInteger.h"

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

/// Offsets and sizes of the code/length/data layout that options, sub-options and data items share (RFC 2132).
class DhcpConst {
public:
    static constexpr U8 opttype_offset = 0;
    static constexpr U8 opttype_size = 1;
    static constexpr U8 optlen_offset = 1;
    static constexpr U8 optlen_size = 1;
    static constexpr U8 optdata_offset = 2;
    /// Size of the enterprise number at the start of a block, and offset of the length byte that follows it.
    static constexpr U8 entno_offset = 4;

    friend bool operator==(const DhcpConst&, const DhcpConst&) { return true; }
    static constexpr auto declaration() {
        using Kcore::constant;
        return Kcore::declare("DhcpConst", constant("opttype_offset", opttype_offset),
                              constant("opttype_size", opttype_size), constant("optlen_offset", optlen_offset),
                              constant("optlen_size", optlen_size), constant("optdata_offset", optdata_offset),
                              constant("entno_offset", entno_offset));
    }
};

/// A raw `op` byte. Converts to true unless it is zero.
class BootpOp {
public:
    constexpr BootpOp(U8 value = 0) : value_(value) {}
    constexpr U8 value() const { return value_; }
    constexpr explicit operator bool() const { return value_ != 0; }
    friend constexpr auto operator<=>(const BootpOp&, const BootpOp&) = default;
    void appendText(std::string& out) const { Kcore::appendText(out, value_); }
    std::size_t hash() const { return Kcore::hashOf(value_); }
    static constexpr auto declaration() {
        return Kcore::declare("BootpOp", Kcore::attribute("value", &BootpOp::value_));
    }

private:
    U8 value_;
};

/// The 16-bit `flags` field of the BOOTP header (RFC 2131, figure 2). Converts to true unless it is zero.
class Flags {
public:
    constexpr Flags() = default;
    constexpr explicit Flags(Kitnet::NetU16 value) : value_(value) {}

    constexpr Kitnet::NetU16 value() const { return value_; }
    constexpr void valueIs(Kitnet::NetU16 value) { value_ = value; }
    /// Bit 15: the client cannot receive unicast replies yet.
    constexpr bool broadcast() const { return value_.value() >> 15 != 0; }
    constexpr void broadcastIs(bool b) {
        value_.valueIs(static_cast<U16>((value_.value() & 0x7fff) | (b ? 0x8000 : 0)));
    }
    /// The low 15 bits, which must be zero.
    constexpr U16 mbz() const { return value_.value() & 0x7fff; }
    constexpr void mbzIs(U16 m) { value_.valueIs(static_cast<U16>((value_.value() & 0x8000) | (m & 0x7fff))); }
    constexpr explicit operator bool() const { return value_.value() != 0; }
    friend constexpr bool operator==(const Flags& a, const Flags& b) { return a.value_ == b.value_; }
    friend constexpr auto operator<=>(const Flags& a, const Flags& b) { return a.value_ <=> b.value_; }
    void appendText(std::string& out) const { Kcore::appendText(out, value_); }
    std::size_t hash() const { return Kcore::hashOf(value_); }
    static constexpr auto declaration() {
        return Kcore::declare("Flags", Kcore::attribute("value", &Flags::value_),
                              Kcore::derived("broadcast", &Flags::broadcast), Kcore::derived("mbz", &Flags::mbz));
    }

private:
    Kitnet::NetU16 value_;
};

}  // namespace DhcpLib
