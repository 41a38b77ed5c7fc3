#pragma once

#include <type_traits>

#include "Kitnet/NetInteger.h"

namespace Kitnet {

/// An IPv4 address; 0.0.0.0 by default. Its integer value is in host order (10.0.0.1 is 0x0A000001).
class DHCPPLATFORM_EXPORT IpAddr : public NetInteger<IpAddr, U32> {
public:
    static constexpr std::string_view typeName = "Kitnet::IpAddr";
    using NetInteger::NetInteger;

    /// Whether it is 0.0.0.0.
    constexpr bool isAny() const { return value() == 0; }
    /// Dotted decimal, each part without leading zeros.
    void appendText(std::string& out) const;
    static bool parse(std::string_view text, IpAddr* value);
};

/// An IPv6 address; :: by default.
class DHCPPLATFORM_EXPORT Ip6Addr : public WireBytes<Ip6Addr, 16> {
public:
    static constexpr std::string_view typeName = "Kitnet::Ip6Addr";

    /// Whether it is the address ::.
    constexpr bool isUnspecified() const { return isEq(Ip6Addr()); }
    /// Printed in the canonical form of RFC 5952. All forms of RFC 4291, section 2.2, are parsed.
    void appendText(std::string& out) const;
    static bool parse(std::string_view text, Ip6Addr* value);
};

static_assert(sizeof(IpAddr) == 4 && alignof(IpAddr) == 1 && std::is_trivially_copyable_v<IpAddr>);
static_assert(sizeof(Ip6Addr) == 16 && alignof(Ip6Addr) == 1 && std::is_trivially_copyable_v<Ip6Addr>);

}  // namespace Kitnet
