#pragma once

#include "DhcpLib/DhcpHdr/VendorBlock.h"

namespace DhcpLib {

/// What a reader that keeps to the length of a sub-option 9 finds in it.
struct VendorBlocks {
    bool own = false;  ///< the system's block, inside the sub-option
    bool all = false;  ///< nothing but whole blocks: one that is appended is found
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
