#pragma once

#include "DhcpLib/Dhcp6Hdr.h"
#include "Links.h"

namespace DhcpRelay {

/// Who sends DHCPv6 messages of a type. Messages of unknown types are relayed in both directions (RFC 7283).
enum class Sender6 : U8 { client, relayForward, server, relayReply, unknown };
Sender6 senderOf(U8 messageType);

/// Positions of the data of the options that the agent reads from a relay message. A missing option has 0 bytes at 0.
struct RelayOptions {
    struct Place {
        U32 at = 0, bytes = 0;
    };
    Place message, interfaceId;
};
RelayOptions relayOptionsOf(const PktPtr& pkt, U32 at);

/// The contents of a relay-forward (RFC 8415, section 9.1), except for the relayed message.
struct RelayForward {
    Port port;
    U8 hopCount = 0;
    Ip6Addr linkAddress, peer;
    std::string interfaceId;
    EthAddr clientMac;     ///< RFC 6939; zero if the client is behind another relay
    std::string_view vrf;  ///< RFC 6607; empty for none
};

/// Builds a relay-forward that contains `message`, and the interface-id and remote-id of the port. Null if the result
/// would be too long for UDP.
PktPtr relayForwardOf(std::span<const U8> message, const RelayForward& forward, const Link& link);

}  // namespace DhcpRelay
