#pragma once

#include <string>

#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "capture/Arrival.h"
#include "message/Message6.h"

namespace DhcpTool {

/// One line for the DHCP or BOOTP message in `frame`: frame number, time (UTC), VLAN, message type, transaction,
/// client, addresses, then the other fields. Fields that are absent, empty or zero are left out. Byte strings from the
/// packet are quoted if printable, else in hex.
std::string messageLine(const Arrival& frame, const DhcpLib::PacketParser& parser);

/// The same for a DHCPv6 frame with the messages `chain`, outermost first: each hop of a relay message, then the
/// message inside.
std::string messageLine(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& parser,
                        const std::vector<Message6>& chain);

}  // namespace DhcpTool
