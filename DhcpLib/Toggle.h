#pragma once

#include "DhcpLib/Export.h"

namespace DhcpLib {

/// Whether the feature toggle "DhcpRelayTunnelEncapReplies" (file DhcpLib.json) is on, which is the default. Read at
/// the first call, then cached. It selects how relay agents encode what they add to a message:
///    on   sub-option 9 has the layout of RFC 4243, a DHCPv6 interface-id is a list of elements
///    off  sub-option 9 is text (docs/compatibility.md#vendor-text-layout), a DHCPv6 interface-id is interface name,
///    ':' and VRF name
DHCPLIB_EXPORT bool dhcpRelayTunnelEncapReplies();

}  // namespace DhcpLib
