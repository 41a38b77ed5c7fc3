#pragma once

#include "Kcore/Encoding.h"
#include "Kitnet/BigEndian.h"
#include "Kitnet/WireBytes.h"

namespace Kitnet {

/// An unsigned integer that is stored in network order and accessed in host order. Its text form is decimal.
template <class Self, std::unsigned_integral T>
class NetInteger : public WireBytes<Self, sizeof(T)> {
public:
    constexpr NetInteger() = default;
    /// From a number in host order.
    constexpr explicit NetInteger(T hostOrder) { valueIs(hostOrder); }

    /// The number in host order.
    constexpr T value() const { return loadBigEndian<T>(this->bytes_.data()); }
    constexpr void valueIs(T hostOrder) { storeBigEndian(this->bytes_.data(), hostOrder); }

    void appendText(std::string& out) const { Kcore::appendText(out, value()); }
    static bool parse(std::string_view text, Self* value) {
        Kcore::CharRange range(text);
        T number{};
        if (!Kcore::sequenceToValue(range, &number) || !range.empty()) return false;
        value->valueIs(number);
        return true;
    }
};

/// A 16-bit field of a packet record.
class NetU16 : public NetInteger<NetU16, U16> {
public:
    static constexpr std::string_view typeName = "Kitnet::NetU16";
    using NetInteger::NetInteger;
};

/// A 32-bit field of a packet record.
class NetU32 : public NetInteger<NetU32, U32> {
public:
    static constexpr std::string_view typeName = "Kitnet::NetU32";
    using NetInteger::NetInteger;
};

/// A UDP port.
class UdpPort : public NetInteger<UdpPort, U16> {
public:
    static constexpr std::string_view typeName = "Kitnet::UdpPort";
    using NetInteger::NetInteger;
};

/// An IPv4 protocol number or IPv6 next header number.
class IpProtocolNumber : public NetInteger<IpProtocolNumber, U8> {
public:
    static constexpr std::string_view typeName = "Kitnet::IpProtocolNumber";
    using NetInteger::NetInteger;
};

static_assert(sizeof(NetU16) == 2 && alignof(NetU16) == 1 && std::is_trivially_copyable_v<NetU16>);
static_assert(sizeof(NetU32) == 4 && alignof(NetU32) == 1 && std::is_trivially_copyable_v<NetU32>);
static_assert(sizeof(UdpPort) == 2 && sizeof(IpProtocolNumber) == 1);

}  // namespace Kitnet
