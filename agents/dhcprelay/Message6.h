#pragma once

#include <initializer_list>

#include "DhcpLib/Dhcp6Hdr.h"
#include "Links.h"

namespace DhcpRelay {

/// Who sends DHCPv6 messages of a type. Types that have no name yet are relayed in both directions (RFC 7283).
enum class Sender6 : U8 { client, relayForward, server, relayReply, unknown };
Sender6 senderOf(U8 messageType);

/// What the agent reads of a relay message's options: where their data are. 0 bytes at 0: there is none.
struct RelayOptions {
    struct Place {
        U32 at = 0, bytes = 0;
    };
    Place message, interfaceId;
};
RelayOptions relayOptionsOf(const PktPtr& pkt, U32 at);

/// The options that a relay-forward for a port has behind its message: interface-id, remote-id and, with a VRF, the
/// virtual subnet selection.
std::string portOptions(const Links& links, const Port& port, std::string_view interfaceId, const std::string& vrf);

/// Makes the message at `at` of the packet, which goes up to the packet's end, one inside a relay-forward: header and
/// relay-message option before it, `options` behind it, and the client's link-layer address (RFC 6939) unless it is
/// zero. Returns the position of the relay-forward.
struct RelayForward {
    U8 hopCount = 0;
    Ip6Addr linkAddress, peer;
    std::string_view options;
    EthAddr clientMac;
};
U32 wrap(Kitnet::Pkt& pkt, U32 at, const RelayForward& forward);

}  // namespace DhcpRelay
