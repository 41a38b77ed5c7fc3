#pragma once

#include <array>
#include <bit>

#include "DhcpLib/Config.h"
#include "DhcpLib/Export.h"
#include "Kcore/Encoding.h"
#include "Kcore/Enum.h"
#include "Kcore/TypeData.h"
#include "Kcore/Types.h"

namespace DhcpLib {

using Kcore::appendText;
using Kcore::sequenceToValue;
using Kcore::stringValue;
using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;
using Kcore::operator<<;

/// Direction of a BOOTP message as an argument of the relay functions (RFC 951, field op).
enum class BootpOption : U32 { bootpRequest = 1, bootpReply = 2 };

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::BootpOption> {
    using enum DhcpLib::BootpOption;
    static constexpr std::string_view name = "BootpOption";
    static constexpr EnumMember<DhcpLib::BootpOption> members[] = {{bootpRequest, "bootpRequest"},
                                                                   {bootpReply, "bootpReply"}};
};

namespace DhcpLib {

inline BootpOption BootpOptionInstance(unsigned number) { return Kcore::enumInstance<BootpOption>(number); }
inline BootpOption BootpOptionInstance(const Kcore::String& name) { return Kcore::enumInstance<BootpOption>(name); }

/// Base of a set of constants. The set has no state: all objects of one set are equal.
template <class Self>
class ConstantSet {
public:
    constexpr ConstantSet() = default;
    /// There is nothing to decode; the text is ignored.
    explicit ConstantSet(const Kcore::CharRange&) {}
    /// Always true: the set has no state.
    constexpr bool isEq(const Self&) const { return true; }
    friend constexpr bool operator==(const Self&, const Self&) { return true; }
    /// The hash of the constants.
    std::size_t hash() const { return Kcore::hashAttributes(static_cast<const Self&>(*this)); }
};

/// Numbers that the whole library shares.
class Constants : public ConstantSet<Constants> {
public:
    using ConstantSet::ConstantSet;

    static constexpr U16 dhcpServerPort = 67;  ///< UDP port of DHCPv4 servers and relay agents (RFC 2131, section 4.1)
    static constexpr U16 dhcpClientPort = 68;  ///< UDP port of DHCPv4 clients
    /// One below the largest value of the one-byte `hops` field, so that a relay can still increment it.
    static constexpr U8 dhcpHopCountLimit = 254;
    /// UDP port of DHCPv6 servers and relay agents (RFC 8415, section 7.2).
    static constexpr U16 dhcp6ServerPort = 547;
    static constexpr U16 dhcp6ClientPort = 546;  ///< UDP port of DHCPv6 clients
    /// The hop count limit of RFC 3315, section 5.5. RFC 8415, section 7.6, has 8.
    static constexpr U8 dhcp6HopCountLimit = 32;
    /// The wire bytes 63 82 53 63 (RFC 2131, section 3) loaded in the host's byte order, without conversion: 1666417251
    /// on a little-endian host. Compare with Wire::ByteView::loadRaw().
    static constexpr U32 dhcpMagicCookie = std::bit_cast<U32>(std::array<U8, 4>{0x63, 0x82, 0x53, 0x63});
    /// Size of the fixed header, up to and including `file`. The magic cookie follows (RFC 2131, section 2).
    static constexpr U32 bootpHdrSize = 236;
    static constexpr U16 hardwareTypeEthernet = 1;  ///< the `htype` of Ethernet (RFC 1700)
    /// The system's own IANA Private Enterprise Number. It marks the own block in the vendor-specific sub-option.
    static constexpr U32 quorvaEntNum = enterpriseNumber;

    static constexpr auto declaration() {
        using Kcore::constant;
        return Kcore::declare(
            "Constants", constant("dhcpServerPort", dhcpServerPort), constant("dhcpClientPort", dhcpClientPort),
            constant("dhcpHopCountLimit", dhcpHopCountLimit), constant("dhcp6ServerPort", dhcp6ServerPort),
            constant("dhcp6ClientPort", dhcp6ClientPort), constant("dhcp6HopCountLimit", dhcp6HopCountLimit),
            constant("dhcpMagicCookie", dhcpMagicCookie), constant("bootpHdrSize", bootpHdrSize),
            constant("hardwareTypeEthernet", hardwareTypeEthernet), constant("quorvaEntNum", quorvaEntNum));
    }
};

}  // namespace DhcpLib
