#pragma once

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

/// What goes into a relay-forward (RFC 8415, section 9.1) beside the message itself.
struct RelayForward {
    Port port;
    U8 hopCount = 0;
    Ip6Addr linkAddress, peer;
    std::string interfaceId;
    EthAddr clientMac;     ///< RFC 6939; zero where the client is not on the link
    std::string_view vrf;  ///< RFC 6607; empty for none
};

/// The message inside a relay-forward, with interface-id and remote-id of the port; null where it is too long for UDP.
PktPtr relayForwardOf(std::span<const U8> message, const RelayForward& forward, const Link& link);

}  // namespace DhcpRelay
