#pragma once

#include "Kitnet/Pkt.h"

namespace Kitnet {

/// The IPv4 header at a position of a packet (RFC 791). Stale once the packet's bytes change or move.
class IpHdr {
public:
    /// The header at `offset` of `pkt`.
    IpHdr(const Pkt& pkt, U32 offset) : firstByte_(offset < pkt.bytes() ? pkt.data()[offset] : U8{0}) {}

    /// The header's length with options, as its first byte says: 0 to 60 bytes. It is compared neither with the
    /// packet's size nor with the minimum of 20. 0 if the header is past the packet's end.
    U32 headerBytes() const { return headerBytes(firstByte_); }
    /// The same for a first byte.
    static constexpr U32 headerBytes(U8 firstByte) { return 4 * (firstByte & 0x0fu); }

private:
    U8 firstByte_;
};

}  // namespace Kitnet
