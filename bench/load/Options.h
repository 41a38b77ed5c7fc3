#pragma once

#include "DhcpLib/Walk.h"

namespace DhcpBench {

using DhcpLib::Option6Shape;
using DhcpLib::OptionShape;
using DhcpLib::Wire::ByteView;

/// Bytes of `bytes` from `pos` on.
inline ByteView tail(ByteView bytes, DhcpLib::U32 pos) { return {bytes.data() + pos, bytes.from(pos)}; }

/// The data of the first option of that code; empty if there is none. `first` is the position of the first option.
template <class Shape>
ByteView optionOf(ByteView bytes, DhcpLib::U32 first, unsigned code) {
    constexpr unsigned end = 255;  // DHCPv4 only; no message here has a DHCPv6 option of that code
    ByteView found;
    DhcpLib::walkItems<Shape, DhcpLib::U32>(
        bytes, 0, first, [&](DhcpLib::U32 at) { return at < bytes.size(); },
        [&](const auto& head, DhcpLib::U32) {
            if (head.code == code)
                found = {bytes.data() + head.dataAt(), std::min<DhcpLib::U32>(head.len, bytes.from(head.dataAt()))};
            return head.code != code && head.code != end;
        });
    return found;
}

inline Octets octetsOf(ByteView bytes) { return {bytes.data(), bytes.data() + bytes.size()}; }

}  // namespace DhcpBench
