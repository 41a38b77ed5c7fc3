#pragma once

#include <algorithm>
#include <concepts>
#include <cstring>
#include <span>
#include <string_view>

#include "DhcpLib/Export.h"
#include "Kcore/CopyBytes.h"
#include "Kitnet/BigEndian.h"
#include "Kitnet/Pkt.h"
#include "Tyk/Exception.h"

namespace DhcpLib {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// Bounded access to packet bytes. All walks, readers and rewriters use it. Integers are big-endian on the wire. A byte
/// past the end reads as 0. A write that does not fit throws Tyk::InternalException and changes nothing. What points
/// into a packet is valid until the packet's size changes.
namespace Wire {

/// Message of the exception that throwNoRoom() throws.
inline constexpr char noRoomText[] = "length value exceeds pkt-length.";

/// A type whose memory image is its wire image, such as an address.
template <class T>
concept WireImage = requires(const U8* bytes, const T& value) {
    { T::fromBytes(bytes) } -> std::same_as<T>;
    { value.bytes() } -> std::convertible_to<const U8*>;
};

/// The wire bytes of `value`. Valid as long as `value`.
template <WireImage T>
std::string_view imageOf(const T& value) {
    return {reinterpret_cast<const char*>(value.bytes()), sizeof value};
}

/// Sentinel: the caller does not know the buffer's size. For functions that are given a pointer only.
inline constexpr U32 unbounded = 0xffffffff;

/// A bounded view of bytes. Does not own them.
class ByteView {
public:
    constexpr ByteView() = default;
    /// `size` bytes at `data`, which may be null if `size` is 0.
    constexpr ByteView(const U8* data, U32 size) : data_(data), size_(size) {}
    /// The bytes of `pkt`. Valid until the packet's size changes.
    explicit ByteView(const Kitnet::Pkt& pkt) : ByteView(pkt.data(), pkt.bytes()) {}
    /// Empty for a null packet.
    explicit ByteView(const Kitnet::Pkt* pkt) : ByteView(pkt != nullptr ? ByteView(*pkt) : ByteView()) {}

    /// The first byte.
    const U8* data() const { return data_; }
    /// Number of bytes.
    U32 size() const { return size_; }
    /// Whether `n` bytes exist at `pos`.
    bool has(U32 pos, U32 n) const { return pos <= size_ && n <= size_ - pos; }
    /// Number of bytes from `pos` to the end.
    U32 from(U32 pos) const { return pos < size_ ? size_ - pos : 0; }

    /// The big-endian integer at `pos`; bytes past the end read as 0.
    template <std::unsigned_integral T>
    T load(U32 pos) const {
        if (!has(pos, sizeof(T))) [[unlikely]]
            return loadCut<T>(pos);
        return Kitnet::loadBigEndian<T>(data_ + pos);
    }
    /// The value at `pos`; bytes past the end read as 0.
    template <WireImage T>
    T load(U32 pos) const {
        if (has(pos, sizeof(T))) [[likely]]
            return T::fromBytes(data_ + pos);
        U8 whole[sizeof(T)] = {};
        if (from(pos) != 0) std::memcpy(whole, data_ + pos, from(pos));
        return T::fromBytes(whole);
    }
    /// The four bytes at `pos` in the host's byte order, without conversion.
    U32 loadRaw(U32 pos) const { return Kitnet::networkOrder(load<U32>(pos)); }
    /// Up to `n` bytes from `pos`, cut at the end.
    std::string_view text(U32 pos, U32 n) const {
        if (from(pos) == 0) return {};
        return {reinterpret_cast<const char*>(data_ + pos), std::min(n, size_ - pos)};
    }
    /// Number of consecutive zero bytes from `pos` on, at most `most`.
    U32 zeroRun(U32 pos, U32 most) const;

private:
    template <std::unsigned_integral T>
    T loadCut(U32 pos) const {
        U64 value = 0;
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): the analyzer forgets that a view of no bytes has size 0
        for (U32 i = 0; i < sizeof(T); ++i) value = value << 8 | (from(pos) > i ? data_[pos + i] : 0u);
        return static_cast<T>(value);
    }

    const U8* data_ = nullptr;
    U32 size_ = 0;
};

inline U32 ByteView::zeroRun(U32 pos, U32 most) const {
    const U32 limit = std::min(most, from(pos));
    U32 n = 0;
    for (U64 word; n + sizeof word <= limit; n += static_cast<U32>(sizeof word)) {
        std::memcpy(&word, data_ + pos + n, sizeof word);
        if (word != 0) break;
    }
    while (n < limit && data_[pos + n] == 0) ++n;
    return n;
}

/// The value at `pos` of the packet; bytes past the end read as 0.
template <class T>
T load(const Kitnet::Pkt& pkt, U32 pos) {
    return ByteView(pkt).load<T>(pos);
}

/// Throws Tyk::InternalException "length value exceeds pkt-length.".
[[noreturn]] DHCPLIB_EXPORT void throwNoRoom();

/// Calls throwNoRoom() unless `n` bytes exist at `pos`.
inline void requireRoom(const Kitnet::Pkt& pkt, U32 pos, U32 n) {
    if (!ByteView(pkt).has(pos, n)) [[unlikely]]
        throwNoRoom();
}

/// Writes `bytes` at `pos`.
template <std::size_t Extent>
void store(Kitnet::Pkt& pkt, U32 pos, std::span<const U8, Extent> bytes) {
    requireRoom(pkt, pos, static_cast<U32>(bytes.size()));
    Kcore::copyBytes(pkt.data() + pos, bytes.data(), bytes.size());
}
/// Writes `bytes` at `pos`.
inline void store(Kitnet::Pkt& pkt, U32 pos, std::string_view bytes) {
    store(pkt, pos, std::span(reinterpret_cast<const U8*>(bytes.data()), bytes.size()));
}
/// Writes a big-endian integer at `pos`.
template <std::unsigned_integral T>
void store(Kitnet::Pkt& pkt, U32 pos, T value) {
    requireRoom(pkt, pos, sizeof(T));
    Kitnet::storeBigEndian(pkt.data() + pos, value);
}
/// Writes the wire bytes of `value` at `pos`.
template <WireImage T>
void store(Kitnet::Pkt& pkt, U32 pos, const T& value) {
    store(pkt, pos, std::span<const U8>(value.bytes(), sizeof(T)));
}
/// Writes `n` bytes of value `byte` at `pos`.
inline void fill(Kitnet::Pkt& pkt, U32 pos, U32 n, U8 byte) {
    requireRoom(pkt, pos, n);
    if (n != 0) std::memset(pkt.data() + pos, byte, n);
}
/// Moves `n` bytes inside the packet. The ranges may overlap.
inline void move(Kitnet::Pkt& pkt, U32 to, U32 from, U32 n) {
    requireRoom(pkt, to, n);
    requireRoom(pkt, from, n);
    if (n != 0) std::memmove(pkt.data() + to, pkt.data() + from, n);
}

}  // namespace Wire

}  // namespace DhcpLib
