#pragma once

namespace DhcpLib {

/// The feature toggle "DhcpRelayTunnelEncapReplies": read once per process, on first need, and kept.
/// It selects the RFC 4243 layout of the relay's vendor data, and the element list of the DHCPv6 interface-id.
bool dhcpRelayTunnelEncapReplies();

}  // namespace DhcpLib
