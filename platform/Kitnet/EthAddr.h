#pragma once

#include "Kitnet/WireBytes.h"

namespace Kitnet {

/// A MAC address; all zero by default.
class DHCPPLATFORM_EXPORT EthAddr : public WireBytes<EthAddr, 6> {
public:
    static constexpr std::string_view typeName = "Kitnet::EthAddr";

    /// Whether all bytes are 0.
    constexpr bool isZero() const { return isEq(EthAddr()); }
    /// Six pairs of hexadecimal digits with colons between them. Printed in lower case, parsed in either case.
    void appendText(std::string& out) const;
    static bool parse(std::string_view text, EthAddr* value);
};

static_assert(sizeof(EthAddr) == 6 && alignof(EthAddr) == 1 && std::is_trivially_copyable_v<EthAddr>);

}  // namespace Kitnet
