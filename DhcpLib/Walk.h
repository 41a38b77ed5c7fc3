#pragma once

#include "DhcpLib/Wire.h"

namespace DhcpLib {

/// What a zero code byte is to a walk: an ordinary code, one pad byte, or the first of a run that is passed in one
/// step.
enum class Pads : U8 { none, single, runs };

/// Code and length of `W` each, in front of the data.
template <std::unsigned_integral W, Pads P>
struct TlvShape {
    using Width = W;
    static constexpr Pads pads = P;
    static constexpr U32 headerBytes = 2 * sizeof(W);
};
using OptionShape = TlvShape<U8, Pads::runs>;        ///< a DHCPv4 option (RFC 2132, section 2)
using SubOptionShape = TlvShape<U8, Pads::none>;     ///< a sub-option of option 82, or a data item of a vendor block
using PaddedItemShape = TlvShape<U8, Pads::single>;  ///< a sub-option found by a caller that counts pads one by one
using Option6Shape = TlvShape<U16, Pads::none>;      ///< a DHCPv6 option (RFC 8415, section 21.1)

/// The item that a walk has come to.
template <class Shape>
struct TlvHead {
    using Width = typename Shape::Width;
    Width code;  ///< 0 for pads
    Width len;   ///< 0 for pads, and where the length lies past the packet's end
    bool pad;
    U32 at;         ///< position of the code; of a run of pads, that of the last one
    U32 wireBytes;  ///< what the item takes, header included; of a run of pads, all of it

    U32 dataAt() const { return at + Shape::headerBytes; }
};

/// The item at `at`; the position of its length is taken in the width of `Pos`, too. A run of pads takes at most
/// `mostPads` bytes.
template <class Shape, std::unsigned_integral Pos>
[[gnu::always_inline]] inline TlvHead<Shape> headAt(Wire::ByteView bytes, Pos at, U32 mostPads) {
    using Width = typename Shape::Width;
    const Width code = bytes.template load<Width>(at);
    if (Shape::pads != Pads::none && code == 0) {
        const U32 run = Shape::pads == Pads::runs ? bytes.zeroRun(at, mostPads) : 1;
        return {0, 0, true, at + run - 1, run};
    }
    const Width len = bytes.template load<Width>(static_cast<Pos>(at + sizeof(Width)));
    return {code, len, false, at, Shape::headerBytes + len};
}

/// The library's one walk over code/length/data items. `inside(cursor)`: does another item start here?
/// `judge(head, next)`: does what is to be done with the item, and tells whether to go on.
/// Cursors count from `base` in the width of `Pos`: with U16 the positions wrap at 65536, as option offsets do.
/// An item whose code is not in the packet does not exist; the walk ends where a cursor would not move forward.
template <class Shape, std::unsigned_integral Pos, class Inside, class Judge>
[[gnu::always_inline]] inline void walkItems(Wire::ByteView bytes, Pos base, Pos first, Inside inside, Judge judge) {
    for (Pos cursor = first; inside(cursor);) {
        const Pos at = static_cast<Pos>(base + cursor);
        if (!bytes.has(at, sizeof(typename Shape::Width))) return;
        const Pos beforeWrap = static_cast<Pos>(~std::max(at, cursor));  // how far both can still go
        const auto head = headAt<Shape>(bytes, at, std::max<U32>(beforeWrap, 1));
        const Pos next = static_cast<Pos>(cursor + head.wireBytes);
        if (!judge(head, next) || next <= cursor) return;
        cursor = next;
    }
}

}  // namespace DhcpLib
