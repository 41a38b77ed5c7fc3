#pragma once

#include "Kitnet/Pkt.h"

namespace Kitnet {

/// Corrects the lengths and checksums (RFC 791, RFC 768) of the IPv4 header at `ipAt` and the UDP header after it, for
/// a datagram that extends to the packet's end. Call it after the payload was changed or assembled. Other fields are
/// used as they are, including the IPv4 header length. Throws RangeException and changes nothing if the headers do not
/// fit into the packet, or if the datagram has more than 65535 bytes.
DHCPPLATFORM_EXPORT void mendUdp(Pkt& pkt, U32 ipAt);

}  // namespace Kitnet
