#include <gtest/gtest.h>

#include <optional>

#include "RelayWorld.h"

namespace DhcpTest {

namespace {

const Settings usual = usualSettings();
constexpr char client6[] = "fe80::c1";
constexpr char clientId[] = "00 01 00 0A 00 03 00 01 02 C1 00 00 00 01";
#define XID "00 00 07 "
#define RELAYED "2001:db8:7::1"
#define FROM_CLIENT "relayed hops 0 link 2001:db8:1::1 peer fe80::c1 interface-id "

Octets address(const char* text) {
    const Ip6Addr a = Ip6Addr::fromText(text);
    return {a.bytes(), a.bytes() + sizeof a};
}

Octets option(U16 code, const Octets& data) {
    return Octets{static_cast<U8>(code >> 8), static_cast<U8>(code), static_cast<U8>(data.size() >> 8),
                  static_cast<U8>(data.size())} +
           data;
}

Octets clientMessage(U8 type) { return Octets{type} + hex(XID) + hex(clientId); }

/// A relay-forward (12) or relay-reply (13).
Octets relayMessage(U8 type, U8 hops, const char* link, const char* peer, const Octets& inner,
                    const char* interfaceId = "") {
    Octets m = Octets{type, hops} + address(link) + address(peer);
    if (*interfaceId != '\0') m = m + option(18, Octets(interfaceId, interfaceId + std::strlen(interfaceId)));
    return inner.empty() ? m : m + option(9, inner);
}

struct RequestRow {
    const char* rule;
    SentFrame frame;
    Octets message;
    const char* expected;
};

const Octets solicit = clientMessage(1);
const Octets nested = relayMessage(12, 0, "2001:db8:7::", "fe80::7", solicit);
Octets passed(U8 hops) { return relayMessage(12, hops, "2001:db8:7::", "fe80::7", solicit); }

const RequestRow requestRows[] = {
    {"a client's message is relayed with the agent's interface-id",
     {.src = client6},
     solicit,
     FROM_CLIENT "eth1:1 message 1"},
    {"a tag with a served VLAN", {.tag = {0x88a8, 20}, .src = client6}, solicit, FROM_CLIENT "eth1:20 message 1"},
    {"a tag with a VLAN that is not served", {.tag = {0x8100, 21}, .src = client6}, solicit, "vlan-not-served"},
    {"an unknown message type is relayed", {.src = client6}, hex("C8 01 02 03 04"), FROM_CLIENT "eth1:1 message 200"},
    {"a leasequery is relayed", {.src = client6}, clientMessage(14), FROM_CLIENT "eth1:1 message 14"},
    {"a DHCPv4-query is relayed", {.src = client6}, clientMessage(20), FROM_CLIENT "eth1:1 message 20"},
    {"a unicast to the agent is relayed",
     {.src = client6, .dst = "2001:db8:1::1", .dstMac = "02:00:00:00:00:01"},
     solicit,
     FROM_CLIENT "eth1:1 message 1"},
    {"a unicast that the kernel routes",
     {.src = client6, .dst = "2001:db8:82::2", .dstMac = "02:00:00:00:00:01"},
     solicit,
     "routed"},
    {"an advertise from a client link", {.src = client6}, clientMessage(2), "server-message"},
    {"a relay-reply from a client link",
     {.link = 1, .src = client6},
     relayMessage(13, 0, "::", "fe80::7", solicit),
     "server-message"},
    {"an incomplete header", {.src = client6}, hex("01 00 00"), "malformed"},
    {"an option that overruns the message", {.src = client6}, solicit + hex("00 08 00 02 00"), "malformed"},
    {"no space for a relay header", {.src = client6}, solicit + option(15, Octets(65470, 0)), "not-rewritable"},
    {"a source that no reply can go to", {.src = "ff02::1"}, solicit, "bad-peer"},
    {"a relay-forward from an untrusted link", {.src = "fe80::7"}, nested, "untrusted-relay"},
    {"a relay-forward from a trusted link",
     {.link = 1, .src = "fe80::7"},
     nested,
     "relayed hops 1 link 2001:db8:2::1 peer fe80::7 interface-id eth2:1 message 12"},
    {"a relay with a global address needs no link-address",
     {.link = 1, .src = RELAYED},
     nested,
     "relayed hops 1 link :: peer 2001:db8:7::1 interface-id eth2:1 message 12"},
    {"7 hops",
     {.link = 1, .src = "fe80::7"},
     passed(7),
     "relayed hops 8 link 2001:db8:2::1 peer fe80::7 interface-id eth2:1 message 12"},
    {"8 hops", {.link = 1, .src = "fe80::7"}, passed(8), "hop-limit"},
};

TEST(Relay6Request, IsRelayedOrDropped) {
    for (const RequestRow& row : requestRows) {
        World world;
        EXPECT_EQ(world.arrives(row.frame.link, frameOf(row.frame, row.message)), row.expected) << row.rule;
    }
}

TEST(Relay6Request, ChecksumIsRequired) {
    World world;
    const SentFrame sent{.src = client6};
    const PktPtr frame = frameOf(sent, solicit);
    constexpr U32 checksumAt = 60;
    frame->data()[checksumAt] = frame->data()[checksumAt + 1] = 0;
    EXPECT_EQ(world.arrives(0, packet(bytesOf(*frame))), "bad-checksum");
}

TEST(Relay6Request, RelayForwardHasAllOptions) {
    Settings settings = usual;
    settings.vrf = "blue";
    World world(settings);
    world.arrives(0, frameOf({.tag = {0x8100, 20}, .src = client6}, solicit));
    const Octets remoteId = hex("00 00 7E D9 00 03 00 01 02 00 00 00 00 01 00 00 00 00 00 00 00 01 01 07 'eth1:20'");
    const Octets expected = hex("0C 00") + address("2001:db8:1::1") + address(client6) + option(9, solicit) +
                            option(18, hex("'eth1:20'")) + option(37, remoteId) + option(68, hex("00 'blue'")) +
                            option(79, hex("00 01 02 C1 00 00 00 01"));
    const Octets sent = bytesOf(*world.last.pkt);
    EXPECT_EQ(Octets(sent.begin() + world.last.at, sent.end()), expected);
}

struct ReplyRow {
    const char* rule;
    std::optional<SentFrame> request;  ///< the client's request before the reply, if it sent one
    Octets reply;
    const char* expected;
};

constexpr std::nullopt_t none = std::nullopt;
const Octets advertise = clientMessage(2);
const char link1[] = "2001:db8:1::1";
Octets reply(const Octets& inner, const char* interfaceId, const char* link = link1, const char* peer = client6) {
    return relayMessage(13, 0, link, peer, inner, interfaceId);
}

const ReplyRow replyRows[] = {
    {"the port that the agent's interface-id names", none, reply(advertise, "eth1:1"),
     "delivered to fe80::c1 00:00:00:00:00:00 on eth1 vlan 1"},
    {"the remembered tag and hardware address", SentFrame{.tag = {0x88a8, 20}, .src = client6},
     reply(advertise, "eth1:20"), "delivered to fe80::c1 02:c1:00:00:00:01 on eth1 vlan 20 tag 88a8"},
    {"a cut interface-id: the remembered port", SentFrame{.tag = {0x8100, 20}, .src = client6}, reply(advertise, "eth"),
     "delivered to fe80::c1 02:c1:00:00:00:01 on eth1 vlan 20 tag 8100"},
    {"a tagged client that is not remembered, with its MAC address in its link-local address", none,
     reply(advertise, "eth1:20", link1, "fe80::c1:ff:fe00:1"),
     "delivered to fe80::c1:ff:fe00:1 02:c1:00:00:00:01 on eth1 vlan 20 tag 8100"},
    {"a tagged client that is not remembered, with another address", none, reply(advertise, "eth1:20"),
     "no-client-address"},
    {"neither interface-id nor memory: the only port with the link-address", none,
     reply(advertise, "", "2001:db8:3::1"), "delivered to fe80::c1 00:00:00:00:00:00 on eth3 vlan 1"},
    {"neither interface-id nor memory, and several VLANs", none, reply(advertise, ""), "no-port"},
    {"an unknown message type is delivered", none, reply(hex("C8 01 02 03 04"), "eth1:1"),
     "delivered to fe80::c1 00:00:00:00:00:00 on eth1 vlan 1"},
    {"a link-address of another relay", none, reply(advertise, "eth1:1", "2001:db8:9::1"), "foreign-relay-address"},
    {"a multicast peer", none, reply(advertise, "eth1:1", link1, "ff02::1"), "bad-peer"},
    {"the agent as peer", none, reply(advertise, "eth1:1", link1, "fe80::1"), "bad-peer"},
    {"no message inside", none, reply({}, "eth1:1"), "not-server-message"},
    {"a client's message inside", none, reply(solicit, "eth1:1"), "not-server-message"},
    {"a relay-forward inside", none, reply(nested, "eth1:1"), "not-server-message"},
    {"a client's message that is not relayed", none, solicit, "client-message"},
    {"an option that overruns the message", none, reply(advertise, "eth1:1") + hex("00"), "malformed"},
    {"a reply to a relay on a trusted link", SentFrame{.link = 1, .src = RELAYED},
     reply(relayMessage(13, 0, "2001:db8:7::", "fe80::7", advertise), "", "::", RELAYED),
     "delivered to 2001:db8:7::1 02:c1:00:00:00:01 on eth2 vlan 1 port 547"},
    {"a reply to a relay on an untrusted link", none,
     reply(relayMessage(13, 0, "2001:db8:7::", "fe80::7", advertise), "eth1:1"), "bad-peer"},
};

TEST(Relay6Reply, IsDeliveredOrDropped) {
    for (const ReplyRow& row : replyRows) {
        World world;
        if (row.request)
            world.arrives(row.request->link, frameOf(*row.request, row.request->link == 1 ? nested : solicit));
        EXPECT_EQ(world.arrives(row.reply, server6), row.expected) << row.rule;
    }
    World world;
    EXPECT_EQ(world.arrives(reply(advertise, "eth1:1"), "2001:db8:82::3"), "unknown-server");
}

TEST(Relay6Reply, DeliversOnlyTheServersMessage) {
    World world;
    world.arrives(reply(advertise, "eth1:1"), server6);
    EXPECT_EQ(bytesOf(*world.last.pkt), advertise);
}

}  // namespace

}  // namespace DhcpTest
