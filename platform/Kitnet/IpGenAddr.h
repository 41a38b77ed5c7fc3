#pragma once

#include "Kcore/Enum.h"
#include "Kitnet/IpAddr.h"

namespace Kitnet {

/// The family of an address.
enum class AddressFamily : U8 { unset, ipv4, ipv6 };

}  // namespace Kitnet

template <>
struct Kcore::EnumTable<Kitnet::AddressFamily> {
    static constexpr std::string_view name = "AddressFamily";
    static constexpr EnumMember<Kitnet::AddressFamily> members[] = {
        {Kitnet::AddressFamily::unset, "unset"},
        {Kitnet::AddressFamily::ipv4, "ipv4"},
        {Kitnet::AddressFamily::ipv6, "ipv6"},
    };
};

namespace Kitnet {

using Kcore::sequenceToValue;
using Kcore::stringValue;

inline AddressFamily AddressFamilyInstance(unsigned number) { return Kcore::enumInstance<AddressFamily>(number); }
inline AddressFamily AddressFamilyInstance(const Kcore::String& name) {
    return Kcore::enumInstance<AddressFamily>(name);
}

/// An address of either family, or unset (the default).
class DHCPPLATFORM_EXPORT IpGenAddr {
public:
    static constexpr std::string_view typeName = "Kitnet::IpGenAddr";

    constexpr IpGenAddr() = default;
    /// The all-zero address of that family.
    constexpr explicit IpGenAddr(AddressFamily family) : family_(family) {}
    /// An IPv4 address.
    constexpr IpGenAddr(const IpAddr& address) { handleV4Addr(address); }
    /// An IPv6 address.
    constexpr IpGenAddr(const Ip6Addr& address) { handleV6Addr(address); }
    /// Throws RangeException if `text` is not an address of either family.
    static IpGenAddr fromText(std::string_view text);

    /// Becomes that IPv4 address.
    constexpr void handleV4Addr(const IpAddr& address) {
        family_ = AddressFamily::ipv4;
        v4_ = address;
        v6_ = {};
    }
    /// Becomes that IPv6 address.
    constexpr void handleV6Addr(const Ip6Addr& address) {
        family_ = AddressFamily::ipv6;
        v4_ = {};
        v6_ = address;
    }

    /// The family; `unset` by default.
    constexpr AddressFamily family() const { return family_; }
    /// Whether the family is IPv4.
    constexpr bool isV4() const { return family_ == AddressFamily::ipv4; }
    /// Whether the family is IPv6.
    constexpr bool isV6() const { return family_ == AddressFamily::ipv6; }
    /// The address; all zero if the family is the other one or unset.
    constexpr const IpAddr& v4Addr() const { return v4_; }
    /// The IPv6 address; :: if the family is another one.
    constexpr const Ip6Addr& v6Addr() const { return v6_; }
    /// Whether this is an address of either family that is not all zero.
    constexpr bool isUsable() const { return !v4_.isAny() || !v6_.isUnspecified(); }

    std::size_t hash() const { return Kcore::hashBytes(this, sizeof *this); }
    /// The text of the address; empty if it is unset.
    void appendText(std::string& out) const;
    static bool parse(std::string_view text, IpGenAddr* value);

    friend constexpr bool operator==(const IpGenAddr&, const IpGenAddr&) = default;
    friend constexpr std::strong_ordering operator<=>(const IpGenAddr&, const IpGenAddr&) = default;

private:
    AddressFamily family_ = AddressFamily::unset;
    IpAddr v4_;
    Ip6Addr v6_;
};
static_assert(sizeof(IpGenAddr) == 21 && std::has_unique_object_representations_v<IpGenAddr>);

}  // namespace Kitnet
