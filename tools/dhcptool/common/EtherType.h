#pragma once

#include "DhcpLib/Wire.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;

inline constexpr U16 ipv4EtherType = 0x0800, ipv6EtherType = 0x86dd;

inline bool isVlanTag(U16 etherType) { return etherType == 0x8100 || etherType == 0x88a8 || etherType == 0x9100; }

/// Position of the EtherType after all tags of a frame.
inline U32 etherTypeAt(DhcpLib::Wire::ByteView frame) {
    constexpr U32 macsBytes = 12, tagBytes = 4;
    U32 at = macsBytes;
    while (isVlanTag(frame.load<U16>(at))) at += tagBytes;
    return at;
}

}  // namespace DhcpTool
