#pragma once

#include "DhcpLib/PacketView.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// Writes `serverId` over the first 4 data bytes of the last option 54 (RFC 2132, section 9.7) of the message that
/// starts at byte 0, whatever the option's length, which stays as it is. Without option 54: true, nothing written.
/// False, after a trace line and with nothing written, where the options cannot be walked, for an option 54 of length
/// 0, and for one so close to the packet's end that the address does not fit.
DHCPLIB_EXPORT bool setServerId(const PktPtr& pkt, Kitnet::IpAddr serverId);

}  // namespace DhcpLib
