#pragma once

#include "DhcpLib/PacketView.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// Writes `serverId` over the first 4 data bytes of the last option 54 (RFC 2132, section 9.7) of the message that
/// starts at byte 0. The option's length is neither checked nor changed
/// (docs/compatibility.md#four-bytes-whatever-the-length). Returns true and writes nothing if there is no option 54.
/// Returns false after a trace line and writes nothing if the options area is malformed, if option 54 is empty, or if
/// the address would pass the packet's end.
DHCPLIB_EXPORT bool setServerId(const PktPtr& pkt, Kitnet::IpAddr serverId);

}  // namespace DhcpLib
