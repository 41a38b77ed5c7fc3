#pragma once

#include <string>

#include "Capture.h"
#include "DhcpLib/DhcpParser.h"

namespace DhcpTool {

/// One line about the DHCP or BOOTP message in which `frame` was parsed: frame number, time (UTC), VLAN, message type,
/// transaction, client, addresses, then what else the message holds. Fields that are absent, empty or zero are left
/// out. Strings from the wire stand as text between quotes where they are printable, else in hex.
std::string messageLine(const Frame& frame, const DhcpLib::PacketParser& parser);

}  // namespace DhcpTool
