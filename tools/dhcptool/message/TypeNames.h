#pragma once

#include <string_view>

#include "DhcpLib/DhcpHdr/Enums.h"

namespace DhcpTool {

/// "DHCPDISCOVER" for the value of option 53. A type without a name gives "DHCP type 200".
std::string_view typeName4(Kcore::U8 type);
/// "solicit" for a DHCPv6 message type. A type without a name gives "DHCPv6 type 36".
std::string_view typeName6(Kcore::U8 type);
/// "BOOTP bootpReq" or "DHCP bootpReq": for a message without a type.
std::string_view operationName(DhcpLib::BootpOpType operation, bool isBootp);
/// "NoAddrsAvail" for the code of a DHCPv6 status (RFC 8415, section 21.13); empty if it has no name.
std::string_view statusName(Kcore::U16 code);

}  // namespace DhcpTool
