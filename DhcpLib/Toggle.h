#pragma once

#include "DhcpLib/Export.h"

namespace DhcpLib {

/// Whether the feature toggle "DhcpRelayTunnelEncapReplies" (file DhcpLib.json) is on. On by default; read at the first
/// call and then kept until the process ends. It selects how relay agents encode what they add to a message:
///   on   the vendor block in sub-option 9 has the layout of RFC 4243, and a DHCPv6 interface-id is a list of elements
///   off  the vendor block is text, and a DHCPv6 interface-id is interface name, ':' and VRF name
DHCPLIB_EXPORT bool dhcpRelayTunnelEncapReplies();

}  // namespace DhcpLib
