#pragma once

#include <concepts>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>

#include "Kcore/Export.h"
#include "Kcore/Types.h"

namespace Kcore {

/// Random, drawn once per process, so that an attacker cannot choose colliding keys.
DHCPPLATFORM_EXPORT U64 hashSeed();

/// Mixes `x` so that every bit affects the whole result.
constexpr U64 mixBits(U64 x) {
    x = (x ^ x >> 32) * 0xd6e8feb86659fd93u;
    x = (x ^ x >> 32) * 0xd6e8feb86659fd93u;
    return x ^ x >> 32;
}

/// Hash of `size` bytes at `data`.
inline std::size_t hashBytes(const void* data, std::size_t size) {
    const auto* p = static_cast<const unsigned char*>(data);
    U64 h = hashSeed() ^ size;
    for (; size >= sizeof(U64); size -= sizeof(U64), p += sizeof(U64)) {
        U64 word;
        std::memcpy(&word, p, sizeof word);
        h = mixBits(h ^ word);
    }
    if (size != 0) {
        U64 rest = 0;
        std::memcpy(&rest, p, size);
        h = mixBits(h ^ rest);
    }
    return static_cast<std::size_t>(h);
}

/// A type with a `hash()` of its own; std::hash uses it, too.
template <class T>
concept SelfHashing = requires(const T& v) {
    { v.hash() } -> std::convertible_to<std::size_t>;
};

/// Hash of a number, an enumeration, a byte string, a duration, or a type with a `hash()` member; std::hash for any
/// other type.
template <class T>
std::size_t hashOf(const T& value) {
    if constexpr (SelfHashing<T>)
        return value.hash();
    else if constexpr (std::is_enum_v<T>)
        return hashOf(static_cast<std::underlying_type_t<T>>(value));
    else if constexpr (std::is_integral_v<T>)
        return static_cast<std::size_t>(mixBits(hashSeed() ^ static_cast<U64>(value)));
    else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
        const std::string_view bytes = value;
        return hashBytes(bytes.data(), bytes.size());
    } else if constexpr (requires { value.count(); })
        return hashOf(value.count());
    else
        return std::hash<T>{}(value);
}

}  // namespace Kcore

template <Kcore::SelfHashing T>
struct std::hash<T> {
    std::size_t operator()(const T& value) const { return value.hash(); }
};
