#pragma once

#include "Kitnet/Pkt.h"

namespace Kitnet {

/// The IPv4 header at a position of a packet (RFC 791). Stale once the packet is.
class IpHdr {
public:
    IpHdr(const Pkt& pkt, U32 offset) : firstByte_(offset < pkt.bytes() ? pkt.data()[offset] : U8{0}) {}

    /// The header's length, options included, as its first byte states it: 0 to 60 bytes. Not checked against the
    /// packet, nor against the 20 bytes that a header has at least; 0 where it lies behind the packet.
    U32 headerBytes() const { return headerBytes(firstByte_); }
    static constexpr U32 headerBytes(U8 firstByte) { return 4 * (firstByte & 0x0fu); }

private:
    U8 firstByte_;
};

}  // namespace Kitnet
