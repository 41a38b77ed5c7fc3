#pragma once

#include "Kcore/Enum.h"
#include "Kcore/Types.h"

namespace DhcpRelay {

/// Why a message was dropped, or another event that is counted for the operator. `none`: no event.
enum class Reason : Kcore::U8 {
    none,
    cutFrame,
    fragment,
    badChecksum,
    twoTags,
    vlanNotServed,
    rateLimit,
    routed,
    malformed,
    serverMessage,
    untrustedRelay,
    ownRelayAddress,
    untrustedInfo,
    forgedPort,
    hopLimit,
    noRelayAddress,
    notRewritable,
    serverUnreachable,
    unknownServer,
    wrongInterface,
    clientMessage,
    foreignRelayAddress,
    badPeer,
    notServerMessage,
    noPort,
    noLink,
    noClientAddress,
    notDelivered,
    pastMtu,
    vrfNotUsed,
    fragmented,
    secondPort,
};

/// What a reason does: nothing, drop the message, or only count an event of a message that is relayed.
enum class ReasonKind : Kcore::U8 { silent, drop, remark };

struct ReasonMember {
    Reason value;
    std::string_view name;
    ReasonKind kind;
    std::string_view text;
};

}  // namespace DhcpRelay

template <>
struct Kcore::EnumTable<DhcpRelay::Reason> {
    using enum DhcpRelay::Reason;
    using enum DhcpRelay::ReasonKind;
    static constexpr std::string_view name = "Reason";
    static constexpr DhcpRelay::ReasonMember members[] = {
        {none, "none", silent, ""},
        {cutFrame, "cut-frame", drop, "the frame is cut short, or its lengths contradict each other"},
        {fragment, "fragment", drop, "a client's message came in IP fragments"},
        {badChecksum, "bad-checksum", drop, "the IP or UDP checksum is wrong"},
        {twoTags, "two-tags", drop, "the frame has two VLAN tags"},
        {vlanNotServed, "vlan-not-served", drop, "the frame is of a VLAN that the link does not serve"},
        {rateLimit, "rate-limit", drop, "the link sent more requests per second than --rate allows"},
        {routed, "routed", drop, "a unicast to another host, which the kernel routes"},
        {malformed, "malformed", drop, "the message is too short, or its options are malformed"},
        {serverMessage, "server-message", drop, "a server's message came from a client link"},
        {untrustedRelay, "untrusted-relay", drop, "a message of another relay came from an untrusted link"},
        {ownRelayAddress, "own-relay-address", drop, "a request that carries a relay address of this agent"},
        {untrustedInfo, "untrusted-option82", drop,
         "a request with option 82 that the policy discards, or hidden in file or sname"},
        {forgedPort, "forged-port", drop, "a kept option 82 that names a port of this agent"},
        {hopLimit, "hop-limit", drop, "the request has reached the hop limit"},
        {noRelayAddress, "no-relay-address", drop, "the client link has no relay address"},
        {notRewritable, "not-rewritable", drop, "option 82 or a relay header cannot be added or removed"},
        {serverUnreachable, "server-unreachable", drop, "the request could not be sent to any server"},
        {unknownServer, "unknown-server", drop, "a reply from an address that is not configured"},
        {wrongInterface, "wrong-interface", drop, "a reply on an interface that is not the server side"},
        {clientMessage, "client-message", drop, "a client's or a relay's message on the server side"},
        {foreignRelayAddress, "foreign-relay-address", drop, "a reply whose relay address is not of this agent"},
        {badPeer, "bad-peer", drop,
         "the source of a request, or the peer-address of a relay-reply, cannot be a client's"},
        {notServerMessage, "not-server-message", drop, "a relay-reply that contains no server's message"},
        {noPort, "no-port", drop, "a reply that is for no port of this agent"},
        {noLink, "no-link", drop, "the client link is missing or down"},
        {noClientAddress, "no-client-address", drop, "the client's hardware address is not known"},
        {notDelivered, "not-delivered", drop, "the reply could not be sent to the client"},
        {pastMtu, "past-mtu", remark, "relayed without option 82, which would make it larger than the MTU"},
        {vrfNotUsed, "vrf-not-used", remark, "the server did not use the VRF of the request"},
        {fragmented, "fragmented", remark, "a reply larger than the client link's MTU, sent in fragments"},
        {secondPort, "second-port", remark, "two ports sent the same transaction; it stays with the first one"},
    };
};

namespace DhcpRelay {

inline constexpr std::size_t reasonCount = std::size(Kcore::EnumTable<Reason>::members);

/// The table row of the reason. The table has the order of the enumeration.
constexpr const ReasonMember& rowOf(Reason reason) {
    return Kcore::EnumTable<Reason>::members[static_cast<std::size_t>(reason)];
}

}  // namespace DhcpRelay
