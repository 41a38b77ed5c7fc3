#pragma once

#include <algorithm>
#include <span>
#include <string>

#include "Bytes.h"

namespace DhcpTest::Fuzz {

/// The steps of a sequence of calls, read from the front of a fuzz input. Behind the end everything is 0.
class Steps {
public:
    Steps(const U8* data, std::size_t size) : rest_(data, size) {}

    bool more() const { return !rest_.empty(); }
    std::span<const U8> take(std::size_t n) {
        const auto taken = rest_.first(std::min(n, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    U8 u8() {
        const auto one = take(1);
        return one.empty() ? U8{0} : one[0];
    }
    U16 u16() {
        const U8 high = u8();
        return static_cast<U16>(high << 8 | u8());
    }
    U32 u32() {
        const U32 high = u16();
        return high << 16 | u16();
    }
    /// A number below `n`; 0 for n = 0.
    std::size_t below(std::size_t n) { return n == 0 ? 0 : u8() % n; }
    /// A length (1) and that many bytes.
    Octets octets() {
        const auto bytes = take(u8());
        return {bytes.begin(), bytes.end()};
    }
    std::string text() {
        const Octets bytes = octets();
        return {bytes.begin(), bytes.end()};
    }
    /// A length (2) and that many bytes.
    Octets longOctets() {
        const auto bytes = take(u16());
        return {bytes.begin(), bytes.end()};
    }
    template <class Address>
    Address address() {
        U8 bytes[sizeof(Address)] = {};
        const auto taken = take(sizeof bytes);
        std::copy(taken.begin(), taken.end(), bytes);
        return Address::fromBytes(bytes);
    }

private:
    std::span<const U8> rest_;
};

}  // namespace DhcpTest::Fuzz
