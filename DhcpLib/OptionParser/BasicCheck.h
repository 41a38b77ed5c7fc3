#pragma once

#include "DhcpLib/PacketView.h"

namespace DhcpLib {

/// Whether the DHCPv4 message at `offset` (its BOOTP header) has a magic cookie and a walk over its options reaches an
/// end option. If not, or for a null packet, traces one line and returns false.
DHCPLIB_EXPORT bool dhcpOptionBasicCheck(const PktPtr& pkt, U32 offset);
/// Whether a DHCPv6 client/server or relay message starts at `offset` and its options end exactly at the packet's end.
/// If not, or for a null packet, traces one line and returns false.
DHCPLIB_EXPORT bool dhcp6OptionBasicCheck(const PktPtr& pkt, U32 offset);

}  // namespace DhcpLib
