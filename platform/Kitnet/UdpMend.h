#pragma once

#include "Kitnet/Pkt.h"

namespace Kitnet {

/// Gives the IPv4 header at `ipAt` and the UDP header behind it the lengths of what the packet holds from there to its
/// end, and right checksums (RFC 791, RFC 768): what is left to do after a datagram's payload was rewritten, or put
/// together. The other fields are read as they stand, the header's own length above all. Raises RangeException, and
/// changes nothing, where the two headers do not fit in the packet or the datagram in 65535 bytes.
DHCPPLATFORM_EXPORT void mendUdp(Pkt& pkt, U32 ipAt);

}  // namespace Kitnet
