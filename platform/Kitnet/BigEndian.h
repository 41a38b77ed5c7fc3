#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>

#include "Kcore/Types.h"

namespace Kitnet {

/// Converts between network order and host order.
template <std::unsigned_integral T>
constexpr T networkOrder(T v) {
    if constexpr (std::endian::native == std::endian::big || sizeof(T) == 1)
        return v;
    else if constexpr (sizeof(T) == 2)
        return __builtin_bswap16(v);
    else if constexpr (sizeof(T) == 4)
        return __builtin_bswap32(v);
    else
        return __builtin_bswap64(v);
}

/// Reads a big-endian integer. Unbounded: requires sizeof(T) readable bytes.
template <std::unsigned_integral T>
constexpr T loadBigEndian(const Kcore::U8* bytes) {
    std::array<Kcore::U8, sizeof(T)> image{};
    std::copy_n(bytes, sizeof(T), image.begin());
    return networkOrder(std::bit_cast<T>(image));
}

/// Writes a big-endian integer. Unbounded: requires sizeof(T) writable bytes.
template <std::unsigned_integral T>
constexpr void storeBigEndian(Kcore::U8* bytes, T v) {
    const auto image = std::bit_cast<std::array<Kcore::U8, sizeof(T)>>(networkOrder(v));
    std::copy_n(image.begin(), sizeof(T), bytes);
}

}  // namespace Kitnet
