#pragma once

#include <algorithm>
#include <array>
#include <compare>
#include <string_view>
#include <type_traits>

#include "Kcore/Export.h"
#include "Kcore/Hash.h"
#include "Kcore/Text.h"
#include "Kcore/Types.h"

namespace Kitnet {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

using Kcore::appendText;
using Kcore::operator<<;

/// Throws RangeException: `<type>: "<text>" is not valid`, with unprintable bytes escaped.
[[noreturn]] DHCPPLATFORM_EXPORT void refuseText(std::string_view type, std::string_view text);
/// Throws RangeException: "<type>::byte > <last> not allowed".
[[noreturn]] DHCPPLATFORM_EXPORT void refuseByte(std::string_view type, std::size_t last);

/// A field of N bytes in wire layout: alignment 1, no padding, trivially copyable, ordered bytewise, all zero by
/// default. `Self` is the derived type. It adds `typeName`, the text form (`appendText`) and its inverse (`static bool
/// parse(std::string_view, Self*)`, which changes nothing if it returns false).
template <class Self, std::size_t N>
class WireBytes {
public:
    static constexpr std::size_t wireBytes = N;  ///< size on the wire and in memory

    /// Throws RangeException if `text` is not the text form of a `Self`.
    static Self fromText(std::string_view text) {
        Self value;
        if (!Self::parse(text, &value)) refuseText(Self::typeName, text);
        return value;
    }
    /// Requires: N readable bytes.
    static constexpr Self fromBytes(const U8* bytes) {
        Self value;
        std::copy_n(bytes, N, value.bytes_.begin());
        return value;
    }

    /// The N bytes in network order.
    constexpr const U8* bytes() const { return bytes_.data(); }
    /// The byte at `i`, counted from 0 in network order. Throws RangeException if `i` is not below N.
    constexpr U8 byte(std::size_t i) const { return bytes_[checked(i)]; }
    /// Sets a byte. Throws RangeException if `i` is not below N.
    constexpr void byteIs(std::size_t i, U8 b) { bytes_[checked(i)] = b; }

    /// Compares a constant number of bytes, which compilers turn into word comparisons instead of a call of memcmp.
    constexpr bool isEq(const Self& other) const {
        if (std::is_constant_evaluated()) return bytes_ == other.bytes_;
        return __builtin_memcmp(bytes_.data(), other.bytes_.data(), N) == 0;
    }
    std::size_t hash() const { return Kcore::hashBytes(bytes_.data(), N); }

    friend constexpr bool operator==(const Self& a, const Self& b) { return a.isEq(b); }
    friend constexpr std::strong_ordering operator<=>(const Self& a, const Self& b) {
        if (!std::is_constant_evaluated()) return __builtin_memcmp(a.bytes(), b.bytes(), N) <=> 0;
        for (std::size_t i = 0; i < N; ++i)
            if (a.bytes_[i] != b.bytes_[i]) return a.bytes_[i] <=> b.bytes_[i];
        return std::strong_ordering::equal;
    }

protected:
    std::array<U8, N> bytes_{};

private:
    static constexpr std::size_t checked(std::size_t i) {
        if (i >= N) refuseByte(Self::typeName, N - 1);
        return i;
    }
};

}  // namespace Kitnet
