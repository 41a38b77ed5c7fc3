#pragma once

#include <string>

#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "snoop/Arrival.h"
#include "snoop/Message6.h"

namespace DhcpTool {

/// One line about the DHCP or BOOTP message in which `frame` was parsed: frame number, time (UTC), VLAN, message type,
/// transaction, client, addresses, then what else the message holds. Fields that are absent, empty or zero are left
/// out. Strings from the wire stand as text between quotes where they are printable, else in hex.
std::string messageLine(const Arrival& frame, const DhcpLib::PacketParser& parser);

/// The same for a DHCPv6 frame, whose messages are, outermost first, `chain`: of a relay message the hop, then the
/// message inside.
std::string messageLine(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& parser,
                        const std::vector<Message6>& chain);

}  // namespace DhcpTool
