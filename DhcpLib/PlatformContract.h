#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kcore/Types.h"

/// What the library needs of the types of the platform layer, to be checked when they are compiled:
/// `template struct DhcpLib::Platform::PacketBuffer<MyPkt>;` compiles if `MyPkt` can be the packet buffer. Otherwise
/// the compiler's message names each operation that is missing. PlatformContract.cpp checks the layer with which the
/// library is built. docs/guide/platform.md tells how to use another layer.
namespace DhcpLib::Platform {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

/// A packet: one contiguous buffer.
template <class T>
struct PacketBuffer {
    static_assert(
        requires(const T& p) {
            { p.bytes() } -> std::same_as<U32>;
        },
        "packet buffer: bytes() is missing: the number of bytes, 32 bits");
    static_assert(
        requires(const T& p) {
            { p.frontBytes() } -> std::same_as<U32>;
        },
        "packet buffer: frontBytes() is missing: the number of bytes that data() reaches, 32 bits");
    static_assert(
        requires(T & p) {
            { p.data() } -> std::same_as<U8*>;
        },
        "packet buffer: data() is missing: the first byte, for reading and writing");
    static_assert(
        requires(const T& p) {
            { p.data() } -> std::same_as<const U8*>;
        },
        "packet buffer: data() const is missing: the first byte, for reading");
    static_assert(
        requires(T & p, U32 n) { p.newSharedHeadData(n); },
        "packet buffer: newSharedHeadData(n) is missing: adds n zero bytes in front of the first byte");
    static_assert(
        requires(T & p, U32 n) { p.newSharedTailData(n); },
        "packet buffer: newSharedTailData(n) is missing: adds n zero bytes behind the last byte");
    static_assert(
        requires(T & p, U32 n) { p.delSharedTailData(n); },
        "packet buffer: delSharedTailData(n) is missing: removes the last n bytes");
    static_assert(
        requires(const T& p) {
            { p.vlanTagPresent() } -> std::same_as<bool>;
        },
        "packet buffer: vlanTagPresent() is missing: whether the receive path took a VLAN tag out of the frame");
    static_assert(
        requires(const T& p) {
            { p.vlanTagTpid() } -> std::same_as<U16>;
        },
        "packet buffer: vlanTagTpid() is missing: the TPID of that tag, in host order");
    static_assert(
        requires(const T& p) {
            { p.vlanTagTci() } -> std::same_as<U16>;
        },
        "packet buffer: vlanTagTci() is missing: the TCI of that tag, in host order");
};

/// What creates packets of type `T`.
template <class M, class T>
struct PacketManager {
    static_assert(
        requires(M & m) {
            { *m.newPkt() } -> std::convertible_to<T&>;
        },
        "packet manager: newPkt() is missing: returns a pointer to a new, empty packet");
    static_assert(
        requires(M & m, std::span<const U8> bytes) {
            { *m.newPkt(bytes) } -> std::convertible_to<T&>;
        },
        "packet manager: newPkt(bytes) is missing: returns a pointer to a packet with a copy of the bytes");
};

/// A pointer `P` that counts the users of a `T`.
template <class P, class T>
struct CountedPointer {
    static_assert(std::default_initializable<P> && std::constructible_from<P, std::nullptr_t>,
                  "counted pointer: it cannot be null");
    static_assert(std::copyable<P> && std::is_nothrow_move_constructible_v<P>,
                  "counted pointer: it cannot be copied, or moving it may throw");
    static_assert(
        requires(const P& p) {
            { p.get() } -> std::same_as<T*>;
        },
        "counted pointer: get() is missing: the object, or null");
    static_assert(
        requires(const P& p) {
            { *p } -> std::same_as<T&>;
        } &&
            requires(const P& p) {
                { p.operator->() } -> std::same_as<T*>;
            },
        "counted pointer: operator* or operator-> is missing");
    static_assert(std::constructible_from<bool, const P&>, "counted pointer: the conversion to bool is missing");
    static_assert(
        requires(T * object) {
            { P::share(object) } -> std::same_as<P>;
        },
        "counted pointer: share(object) is missing: one more user of an object that others use");
};

/// A field of `size` bytes whose memory image is its wire image.
template <class T, std::size_t size>
struct WireField {
    static_assert(sizeof(T) == size && alignof(T) == 1,
                  "wire field: its size or alignment is not that of the wire image");
    static_assert(std::is_trivially_copyable_v<T> && std::default_initializable<T>,
                  "wire field: it is not trivially copyable, or has no default value");
    static_assert(
        requires(const U8* bytes) {
            { T::fromBytes(bytes) } -> std::same_as<T>;
        },
        "wire field: fromBytes(bytes) is missing: the value of these bytes in network order");
    static_assert(
        requires(const T& v) {
            { v.bytes() } -> std::convertible_to<const U8*>;
        },
        "wire field: bytes() is missing: its bytes in network order");
    static_assert(std::totally_ordered<T>, "wire field: a comparison is missing");
    static_assert(
        requires(const T& v) {
            { v.hash() } -> std::convertible_to<std::size_t>;
        },
        "wire field: hash() is missing");
    static_assert(
        requires(const T& v, std::string& out) { v.appendText(out); },
        "wire field: appendText(out) is missing: appends the usual text form");
};

/// An unsigned integer that is stored in network order and accessed as a `Host`.
template <class T, class Host>
struct WireInteger : WireField<T, sizeof(Host)> {
    static_assert(std::constructible_from<T, Host>, "wire integer: it cannot be made of a number in host order");
    static_assert(
        requires(const T& v) {
            { v.value() } -> std::same_as<Host>;
        },
        "wire integer: value() is missing: the number in host order");
    static_assert(
        requires(T & v, Host number) { v.valueIs(number); },
        "wire integer: valueIs(number) is missing: stores a number in host order");
};

/// An IPv4 address.
template <class T>
struct Ip4Address : WireField<T, 4> {
    static_assert(
        requires(const T& a) {
            { a.isAny() } -> std::same_as<bool>;
        },
        "IPv4 address: isAny() is missing: whether it is 0.0.0.0");
    static_assert(
        requires(const T& a) {
            { a.value() } -> std::same_as<U32>;
        },
        "IPv4 address: value() is missing: the address as a number in host order");
};

/// An IPv6 address.
template <class T>
struct Ip6Address : WireField<T, 16> {
    static_assert(
        requires(const T& a) {
            { a.isUnspecified() } -> std::same_as<bool>;
        },
        "IPv6 address: isUnspecified() is missing: whether it is ::");
};

/// A MAC address.
template <class T>
struct MacAddress : WireField<T, 6> {
    static_assert(
        requires(const T& a) {
            { a.isZero() } -> std::same_as<bool>;
        },
        "MAC address: isZero() is missing: whether all bytes are 0");
};

/// An address of either family, `V4` or `V6`, or none.
template <class T, class V4, class V6>
struct AnyAddress {
    static_assert(std::default_initializable<T> && std::copyable<T>, "address of either family: it cannot be unset");
    static_assert(std::constructible_from<T, V4> && std::constructible_from<T, V6>,
                  "address of either family: it cannot be made of an address of each family");
    static_assert(
        requires(const T& a) {
            { a.isV4() } -> std::same_as<bool>;
        },
        "address of either family: isV4() is missing");
    static_assert(
        requires(const T& a) {
            { a.isUsable() } -> std::same_as<bool>;
        },
        "address of either family: isUsable() is missing: whether it is set and not all zero");
    static_assert(
        requires(const T& a) {
            { a.v4Addr() } -> std::convertible_to<V4>;
        } &&
            requires(const T& a) {
                { a.v6Addr() } -> std::convertible_to<V6>;
            },
        "address of either family: v4Addr() or v6Addr() is missing");
};

/// The name of an interface.
template <class T>
struct InterfaceName {
    static_assert(std::default_initializable<T> && std::copyable<T> && std::totally_ordered<T>,
                  "interface name: it cannot be empty, copied or compared");
    static_assert(std::constructible_from<T, std::string_view>,
                  "interface name: it cannot be made of a text; throws Kcore::RangeException for one that is no name");
    static_assert(
        requires(std::string_view text, T* name) {
            { T::parse(text, name) } -> std::same_as<bool>;
        },
        "interface name: parse(text, name) is missing: as the constructor, but returns false");
    static_assert(
        requires(const T& n) {
            { n.name() } -> std::convertible_to<std::string_view>;
        },
        "interface name: name() is missing");
    static_assert(
        requires(const T& n) { n.shortName(); }, "interface name: shortName() is missing");
    static_assert(
        requires(const T& n) {
            { n.isEmpty() } -> std::same_as<bool>;
        },
        "interface name: isEmpty() is missing");
};

/// A VLAN number.
template <class T>
struct VlanNumber {
    static_assert(std::default_initializable<T> && std::copyable<T> && std::totally_ordered<T>,
                  "VLAN number: it has no default value, or cannot be copied or compared");
    static_assert(std::constructible_from<T, unsigned>,
                  "VLAN number: it cannot be made of a number; throws Kcore::RangeException for one that is too large");
    static_assert(
        requires(const T& v) {
            { v.value() } -> std::same_as<U16>;
        },
        "VLAN number: value() is missing");
};

/// The VLAN settings of the interfaces, which have names of type `Name`.
template <class T, class Name>
struct VlanSettings {
    static_assert(
        requires(const T& c, const Name& intf) {
            { c.switchIntfConfig(intf) == nullptr } -> std::same_as<bool>;
        },
        "VLAN settings: switchIntfConfig(intf) is missing: a pointer to the interface's entry, or null");
    static_assert(
        requires(const T& c, const Name& intf) { c.switchIntfConfig(intf)->nativeVlan(); },
        "VLAN settings: nativeVlan() of an entry is missing: the VLAN of frames without a tag");
    static_assert(
        requires(const T& c, const Name& intf) { c.switchIntfConfig(intf)->switchportMode(); },
        "VLAN settings: switchportMode() of an entry is missing: access, trunk or dot1qTunnel");
};

/// A string of any bytes.
template <class T>
struct ByteString {
    static_assert(std::default_initializable<T> && std::copyable<T> && std::equality_comparable<T>,
                  "byte string: it cannot be empty, copied or compared");
    static_assert(std::constructible_from<T, std::string_view>, "byte string: it cannot be made of bytes");
    static_assert(std::convertible_to<const T&, std::string_view>,
                  "byte string: the conversion to std::string_view is missing");
    static_assert(
        requires(const T& s) {
            { s.size() } -> std::same_as<std::size_t>;
        },
        "byte string: size() is missing");
    static_assert(
        requires(const T& s) {
            { s.data() } -> std::same_as<const char*>;
        },
        "byte string: data() is missing");
    static_assert(
        requires(const T& s) {
            { s.empty() } -> std::same_as<bool>;
        },
        "byte string: empty() is missing");
    static_assert(
        requires(const T& s) {
            { s.view() } -> std::same_as<std::string_view>;
        },
        "byte string: view() is missing");
};

/// The byte string of an attribute that a parser resets.
template <class T>
struct ClearableString : ByteString<T> {
    static_assert(
        requires(T & s) { s.clear(); }, "byte string: clear() is missing");
};

/// A growable buffer, in which options are assembled.
template <class T>
struct ByteBuffer {
    static_assert(
        requires(const T& b) {
            { b.size() } -> std::same_as<std::size_t>;
        },
        "byte buffer: size() is missing");
    static_assert(
        requires(T & b) {
            { b.data() } -> std::same_as<U8*>;
        },
        "byte buffer: data() is missing");
    static_assert(
        requires(const T& b) {
            { b.span() } -> std::same_as<std::span<const U8>>;
        },
        "byte buffer: span() is missing: all bytes");
    static_assert(
        requires(T & b, U8 byte) { b.push_back(byte); }, "byte buffer: push_back(byte) is missing");
    static_assert(
        requires(T & b, std::span<const U8> bytes) { b.append(bytes); },
        "byte buffer: append(bytes) is missing; the bytes may be a part of the buffer");
    static_assert(
        requires(T & b, std::size_t n) { b.resize(n); }, "byte buffer: resize(n) is missing; new bytes are zero");
};

/// An exception with a message.
template <class T>
struct Exception {
    static_assert(std::derived_from<T, std::exception>, "exception: it is not derived from std::exception");
    static_assert(std::constructible_from<T, std::string_view>, "exception: it cannot be made of a message");
};

/// A name to trace under.
template <class T>
struct TraceName {
    static_assert(std::constructible_from<T, std::string_view, bool>,
                  "trace handle: it cannot be made of a name and the flag for the time of day");
    static_assert(
        requires(const T& h, int level) {
            { h.wanted(level) } -> std::same_as<bool>;
        },
        "trace handle: wanted(level) is missing: whether lines of this level are wanted");
};

/// The packet access of one interface, which returns frames of type `Frame`.
template <class T, class Frame>
struct PacketAccess {
    static_assert(
        requires(T & pam) {
            { pam.readPkt() } -> std::same_as<Frame>;
        },
        "packet access: readPkt() is missing: the next frame");
    static_assert(
        requires(const T& pam) {
            { pam.fd() } -> std::same_as<int>;
        },
        "packet access: fd() is missing: the descriptor to poll, or -1");
    static_assert(
        requires(const Frame& frame) {
            frame.pkt;
            frame.intf;
            { frame.outgoing } -> std::convertible_to<bool>;
        },
        "packet access: a frame has no pkt, intf or outgoing");
};

}  // namespace DhcpLib::Platform
