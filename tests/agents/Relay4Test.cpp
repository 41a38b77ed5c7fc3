#include <gtest/gtest.h>

#include <optional>

#include "RelayWorld.h"

namespace DhcpTest {

namespace {

#define COOKIE "63 82 53 63 "
#define DISCOVER COOKIE "35 01 01 "
#define FOREIGN_INFO "52 0B 01 09 'elsewhere' "
constexpr char withInfo[] = DISCOVER FOREIGN_INFO "FF";

const Settings usual = usualSettings();
const char relayed[] = "relayed giaddr 10.20.0.1 hops 1 circuit-id eth1:1";
const char relayed20[] = "relayed giaddr 10.20.0.1 hops 1 circuit-id eth1:20";

template <class Change>
Settings changed(Change change) {
    Settings s = usual;
    change(s);
    return s;
}

struct RequestRow {
    const char* rule;
    SentFrame frame;
    Message4 message;
    const char* expected;
    Settings settings = usual;
};

const RequestRow requestRows[] = {
    {"a broadcast is relayed with option 82 of the agent", {}, {}, relayed},
    {"a tag with a served VLAN", {.tag = {0x8100, 20}}, {}, relayed20},
    {"a provider's tag (802.1ad)", {.tag = {0x88a8, 20}}, {}, relayed20},
    {"a priority tag belongs to the native VLAN", {.tag = {0x8100, 0}}, {}, relayed},
    {"a tag with a VLAN that is not served", {.tag = {0x8100, 21}}, {}, "vlan-not-served"},
    {"a renewal to the relay's own address",
     {.src = "10.20.0.9", .dst = "10.20.0.1", .dstMac = "02:00:00:00:00:01"},
     {.ciaddr = "10.20.0.9"},
     relayed},
    {"the broadcast address of the link's subnet", {.src = "10.20.0.9", .dst = "10.20.0.255"}, {}, relayed},
    {"a unicast that the kernel routes",
     {.src = "10.20.0.9", .dst = "10.82.0.2", .dstMac = "02:00:00:00:00:01"},
     {},
     "routed"},
    {"a unicast to another host of the link",
     {.src = "10.20.0.9", .dst = "10.20.0.7", .dstMac = "02:00:00:00:00:77"},
     {},
     "ignored"},
    {"a reply from a client link", {}, {.op = 2}, "server-message"},
    {"neither a request nor a reply", {}, {.op = 3}, "malformed"},
    {"options without an end", {}, {.options = DISCOVER}, "malformed"},
    {"BOOTP without options is relayed without option 82",
     {},
     {.options = "00*64"},
     "relayed giaddr 10.20.0.1 hops 1 no option 82"},
    {"option 82 from an untrusted link", {}, {.options = withInfo}, "untrusted-option82"},
    {"option 82 from an untrusted link, replaced", {}, {.options = withInfo}, relayed, changed([](Settings& s) {
         s.untrustedInfo = InfoPolicy::replace;
     })},
    {"two options 82 from an untrusted link, replaced by one",
     {},
     {.options = DISCOVER FOREIGN_INFO "0C 01 'h'" FOREIGN_INFO "FF"},
     relayed,
     changed([](Settings& s) { s.untrustedInfo = InfoPolicy::replace; })},
    {"an option 82 in the file field cannot be replaced",
     {},
     {.options = DISCOVER "34 01 01 FF", .file = "0C 01 'h' 00 " FOREIGN_INFO},
     "untrusted-option82",
     changed([](Settings& s) { s.untrustedInfo = InfoPolicy::replace; })},
    {"the same bytes in a file field that holds no options", {}, {.file = FOREIGN_INFO}, relayed},
    {"option 82 from a trusted link is kept",
     {.link = 1},
     {.options = withInfo},
     "relayed giaddr 10.30.0.1 hops 1 circuit-id elsewhere"},
    {"option 82 from a trusted link that names a port of the agent",
     {.link = 1},
     {.options = DISCOVER "52 08 01 06 'eth1:1' FF"},
     "forged-port"},
    {"another relay's request from an untrusted link", {}, {.giaddr = "10.99.0.1"}, "untrusted-relay"},
    {"another relay's request from a trusted link keeps its giaddr",
     {.link = 1},
     {.hops = 1, .giaddr = "10.99.0.1", .options = withInfo},
     "relayed giaddr 10.99.0.1 hops 2 circuit-id elsewhere"},
    {"the agent's giaddr from an untrusted link", {}, {.giaddr = "10.30.0.1"}, "own-relay-address"},
    {"the agent's giaddr from a trusted link", {.link = 1}, {.giaddr = "10.82.0.1"}, "own-relay-address"},
    {"15 hops", {}, {.hops = 15}, "relayed giaddr 10.20.0.1 hops 16 circuit-id eth1:1"},
    {"16 hops", {}, {.hops = 16}, "hop-limit"},
    {"a configured hop limit", {}, {.hops = 4}, "hop-limit", changed([](Settings& s) { s.hopLimit4 = 4; })},
    {"a link without an address", {.link = 2}, {}, "no-relay-address"},
    {"a link with a configured giaddr",
     {.link = 2},
     {},
     "relayed giaddr 10.20.0.1 hops 1 circuit-id eth3:1",
     changed([](Settings& s) {
         s.giaddrs = {{IntfId("eth3"), 0, IpAddr::fromText("10.20.0.1")}};
     })},
    {"a request that option 82 would make larger than the MTU",
     {},
     {},
     "relayed giaddr 10.20.0.1 hops 1 no option 82 +past-mtu",
     changed([](Settings& s) { s.mtu = 575; })},
};

TEST(Relay4Request, IsRelayedOrDropped) {
    for (const RequestRow& row : requestRows) {
        World world(row.settings);
        EXPECT_EQ(world.arrives(row.frame.link, frameOf(row.frame, bytesOf(row.message))), row.expected) << row.rule;
    }
}

TEST(Relay4Request, EachLinkHasItsOwnRateLimit) {
    World world(changed([](Settings& s) { s.rate = 2; }));
    const Octets request = bytesOf(Message4{});
    for (const char* expected : {relayed, relayed, "rate-limit"})
        EXPECT_EQ(world.arrives(0, frameOf({}, request)), expected);
    EXPECT_EQ(world.arrives(1, frameOf({.link = 1}, request)), "relayed giaddr 10.30.0.1 hops 1 circuit-id eth2:1");
    world.context.time += std::chrono::milliseconds(500);
    for (const char* expected : {relayed, "rate-limit"}) EXPECT_EQ(world.arrives(0, frameOf({}, request)), expected);
}

TEST(Relay4Request, IncompleteOrDamagedFrameIsDropped) {
    World world;
    const Octets whole = bytesOf(*frameOf({}, bytesOf(Message4{})));
    constexpr std::size_t headers = 42;
    for (std::size_t n = 0; n < whole.size(); ++n)
        EXPECT_EQ(world.arrives(0, packet(first(whole, n))), n < headers ? "ignored" : "cut-frame") << n;
    const auto broken = [&](std::size_t at, U8 value) {
        Octets bytes = whole;
        bytes[at] ^= value;
        return packet(bytes);
    };
    EXPECT_EQ(world.arrives(0, broken(100, 1)), "bad-checksum");
    EXPECT_EQ(world.arrives(0, broken(100, 1), false), relayed);
    EXPECT_EQ(world.arrives(0, broken(26, 1)), "bad-checksum");
    EXPECT_EQ(world.arrives(0, broken(38, 0xff)), "cut-frame");
    EXPECT_EQ(world.arrives(0, packet(whole + Octets(20, scratch))), relayed);
    const PktPtr twice = packet(first(whole, 12) + hex("81 00 00 14") + Octets(whole.begin() + 12, whole.end()));
    twice->vlanTagIs(0x88a8, 20);
    EXPECT_EQ(world.arrives(0, twice), "two-tags");
}

struct ReplyRow {
    const char* rule;
    std::optional<SentFrame> request;  ///< the client's request before the reply, if it sent one
    Message4 reply;
    const char* expected;
    Settings settings = usual;
    const char* from = server4;
    U32 ifIndex = 0;
};

#define OFFER COOKIE "35 01 02 "
#define OUR_INFO "52 08 01 06 'eth1:1' "
constexpr std::nullopt_t none = std::nullopt;
constexpr Message4 offer{.op = 2, .yiaddr = "10.20.0.9", .giaddr = "10.20.0.1", .options = OFFER OUR_INFO "FF"};

Message4 with(Message4 message, const char* options) {
    message.options = options;
    return message;
}

Settings shared() {
    return changed([](Settings& s) {
        s.giaddrs = {{IntfId(), 0, IpAddr::fromText("10.20.0.1")}};
        s.circuitId = "port-7";
    });
}

const char toClient[] = "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth1 vlan 1";
const char toClient20[] = "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth1 vlan 20 tag 8100";
const char toAll[] = "delivered to 255.255.255.255 ff:ff:ff:ff:ff:ff on eth1 vlan 1";

const ReplyRow replyRows[] = {
    {"the port that the agent's circuit-id names", none, offer, toClient},
    {"the VLAN that it names, with a tag", none, with(offer, OFFER "52 09 01 07 'eth1:20' FF"), toClient20},
    {"the tag of the request", SentFrame{.tag = {0x88a8, 0x6014}}, with(offer, OFFER "52 09 01 07 'eth1:20' FF"),
     "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth1 vlan 20 tag 88a8 priority 3"},
    {"the priority tag of the request", SentFrame{.tag = {0x8100, 0}}, offer,
     "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth1 vlan 1 tag 8100"},
    {"a circuit-id with a VLAN that is not served", none, with(offer, OFFER "52 09 01 07 'eth1:21' FF"), "no-port"},
    {"a circuit-id of a link with another relay address", none, with(offer, OFFER "52 08 01 06 'eth2:1' FF"),
     "no-port"},
    {"without option 82: the remembered port", SentFrame{.tag = {0x8100, 20}}, with(offer, OFFER "FF"), toClient20},
    {"all ports with the same circuit-id and relay address: the remembered port", SentFrame{.link = 2},
     with(offer, OFFER "52 08 01 06 'port-7' FF"), "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth3 vlan 1", shared()},
    {"neither circuit-id nor memory: the only port with the relay address",
     none,
     {.op = 2, .yiaddr = "10.30.0.9", .giaddr = "10.30.0.1", .options = OFFER "FF"},
     "delivered to 10.30.0.9 02:c1:00:00:00:01 on eth2 vlan 1"},
    {"neither circuit-id nor memory, and two ports with the relay address", none, with(offer, OFFER "FF"), "no-port",
     shared()},
    {"a kept option 82 of another device: the remembered port",
     SentFrame{.link = 1},
     {.op = 2, .yiaddr = "10.30.0.9", .giaddr = "10.30.0.1", .options = OFFER FOREIGN_INFO "FF"},
     "delivered to 10.30.0.9 02:c1:00:00:00:01 on eth2 vlan 1"},
    {"a request on the server side", none, {.op = 1, .giaddr = "10.20.0.1"}, "client-message"},
    {"a reply to another relay", none, {.op = 2, .giaddr = "10.99.0.1"}, "foreign-relay-address"},
    {"a reply without relay address", none, {.op = 2}, "foreign-relay-address"},
    {"a reply from an address that is not configured", none, offer, "unknown-server", usual, "10.82.0.3"},
    {"a reply from an address of --accept-replies-from", none, offer, toClient,
     changed([](Settings& s) { s.replySources = {IpAddr::fromText("10.82.0.3")}; }), "10.82.0.3"},
    {"a reply on another interface", none, offer, "wrong-interface",
     changed([](Settings& s) { s.serverInterface = IntfId("eth9"); }), server4, 3},
    {"a reply on an untrusted client link", none, offer, "wrong-interface", usual, server4, 1},
    {"a reply on a trusted client link", none, offer, toClient, usual, server4, 2},
    {"malformed options", none, with(offer, OFFER), "malformed"},
    {"the broadcast flag",
     none,
     {.op = 2, .flags = 0x8000, .yiaddr = "10.20.0.9", .giaddr = "10.20.0.1", .options = OFFER OUR_INFO "FF"},
     toAll},
    {"ciaddr takes precedence over the broadcast flag",
     none,
     {.op = 2, .flags = 0x8000, .ciaddr = "10.20.0.8", .giaddr = "10.20.0.1", .options = OFFER OUR_INFO "FF"},
     "delivered to 10.20.0.8 02:c1:00:00:00:01 on eth1 vlan 1"},
    {"a NAK is broadcast",
     none,
     {.op = 2, .ciaddr = "10.20.0.8", .giaddr = "10.20.0.1", .options = COOKIE "35 01 06 " OUR_INFO "FF"},
     toAll},
    {"neither ciaddr nor yiaddr", none, {.op = 2, .giaddr = "10.20.0.1", .options = OFFER OUR_INFO "FF"}, toAll},
    {"a multicast chaddr",
     none,
     {.op = 2,
      .yiaddr = "10.20.0.9",
      .giaddr = "10.20.0.1",
      .chaddr = "01:00:5e:00:00:01",
      .options = OFFER OUR_INFO "FF"},
     toAll},
    {"VSS control that the server returns", none, with(offer, OFFER "52 0A 01 06 'eth1:1' 98 00 FF"),
     "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth1 vlan 1 +vrf-not-used"},
};

TEST(Relay4Reply, IsDeliveredOrDropped) {
    for (const ReplyRow& row : replyRows) {
        World world(row.settings);
        if (row.request) {
            const Message4 request{.options = row.request->link == 1 ? withInfo : Message4{}.options};
            world.arrives(row.request->link, frameOf(*row.request, bytesOf(request)));
        }
        EXPECT_EQ(world.arrives(bytesOf(row.reply), row.from, row.ifIndex), row.expected) << row.rule;
    }
}

TEST(Relay4Reply, OwnOption82IsRemovedAndForeignOneKept) {
    World world;
    world.arrives(bytesOf(offer), server4);
    EXPECT_EQ(Octets(world.last.pkt->data() + 236, world.last.pkt->data() + 244), hex(OFFER "FF"));

    world.arrives(1, frameOf({.link = 1}, bytesOf(Message4{.options = withInfo})));
    const Octets kept =
        bytesOf(Message4{.op = 2, .yiaddr = "10.30.0.9", .giaddr = "10.30.0.1", .options = OFFER FOREIGN_INFO "FF"});
    world.arrives(kept, server4);
    EXPECT_EQ(bytesOf(*world.last.pkt), kept);
}

TEST(Relay4Reply, IsMatchedByTheSignificantBytesOfChaddr) {
    World world(shared());
    Octets request = bytesOf(Message4{});
    std::fill_n(request.begin() + 34, 10, scratch);
    world.arrives(0, frameOf({}, request));
    EXPECT_EQ(world.arrives(bytesOf(with(offer, OFFER "FF")), server4), toClient);
    request[2] = 17;  // longer than the field
    EXPECT_EQ(world.arrives(0, frameOf({}, request)), "malformed");
}

TEST(Relay4Reply, TransactionStaysWithItsFirstPort) {
    World world(shared());
    const Octets request = bytesOf(Message4{});
    world.arrives(0, frameOf({}, request));
    EXPECT_EQ(world.arrives(2, frameOf({.link = 2}, request)),
              "relayed giaddr 10.20.0.1 hops 1 circuit-id port-7 +second-port");
    const Octets reply = bytesOf(with(offer, OFFER "FF"));
    EXPECT_EQ(world.arrives(reply, server4), toClient);
    world.context.now += world.context.settings.rememberSeconds;
    EXPECT_EQ(world.arrives(reply, server4), "no-port");
    world.arrives(2, frameOf({.link = 2}, request));
    EXPECT_EQ(world.arrives(reply, server4), "delivered to 10.20.0.9 02:c1:00:00:00:01 on eth3 vlan 1");
}

}  // namespace

}  // namespace DhcpTest
