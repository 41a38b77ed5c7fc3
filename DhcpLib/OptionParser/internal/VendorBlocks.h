#pragma once

#include "DhcpLib/DhcpHdr/VendorBlock.h"

namespace DhcpLib {

/// What a reader finds in a sub-option 9 if it stops at the end of the sub-option.
struct VendorBlocks {
    bool own = false;  ///< the own block, inside the sub-option
    bool all = false;  ///< the sub-option consists of whole blocks, so readers find a block that is appended
};

inline VendorBlocks vendorBlocksIn(Wire::ByteView bytes, U32 at, U8 len) {
    const U32 end = at + len;
    VendorBlocks blocks;
    VendorBlockHead head;
    while (at < end && vendorBlockAt(bytes, at, &head)) {
        at += vendorBlockHeaderBytes + head.len;
        if (at <= end && head.entno == Constants::quorvaEntNum) blocks.own = true;
    }
    blocks.all = at == end;
    return blocks;
}

}  // namespace DhcpLib
