#include <gtest/gtest.h>

#include <fstream>

#include "Counters.h"
#include "DhcpLib/Wire.h"
#include "Options.h"
#include "Pace.h"
#include "RelayWorld.h"

namespace DhcpTest {

namespace {

TransactionKey keyOf(U8 n) {
    TransactionKey key;
    key.id[0] = n;
    return key;
}

TEST(TransactionMemory, FloodOnOneLinkEvictsOnlyItsOwnOldest) {
    TransactionMemory memory(2, 4, 60);
    memory.remember(keyOf(200), {{1, 1, {}}, {}, false}, 0);
    for (U8 n = 0; n < 100; ++n) memory.remember(keyOf(n), {{0, 1, {}}, {}, false}, 0);
    for (U8 n = 0; n < 100; ++n) EXPECT_EQ(memory.find(keyOf(n), 0) != nullptr, n >= 96) << int{n};
    ASSERT_NE(memory.find(keyOf(200), 59), nullptr);
    EXPECT_EQ(memory.find(keyOf(200), 60), nullptr);
}

/// The share of turns with a rest if `waiting` messages are served in each turn and messages arrive at intervals of
/// `gap`. `isLoop`: clients send the next message only after a reply.
double restfulTurns(unsigned waiting, std::chrono::microseconds gap, bool isLoop) {
    Pace pace;
    Pace::Clock::time_point now;
    constexpr int turns = 20000;
    int rests = 0;
    for (int i = 0; i < turns; ++i) {
        const auto rest = pace.restAfter(now, waiting);
        EXPECT_LE(rest, Pace::longestRest);
        if (rest > rest.zero()) ++rests;
        now += isLoop ? gap * waiting + rest : std::max<Pace::Clock::duration>(gap * waiting, rest);
    }
    return double(rests) / turns;
}

TEST(Pace, RestsOnlyIfClientsAreNotSlowedDown) {
    using std::chrono::microseconds;
    EXPECT_GT(restfulTurns(8, microseconds(300), false), 0.9);
    EXPECT_LT(restfulTurns(4, microseconds(20), true), 0.05);
    EXPECT_EQ(restfulTurns(1, microseconds(5000), false), 0);
    EXPECT_EQ(restfulTurns(32, microseconds(10), false), 0);
}

TEST(PortName, FindsThePortWithThatName) {
    World world;
    const Links& links = world.context.links;
    const struct {
        const char *pattern, *text, *port;
    } rows[] = {{"%i:%v", "eth1:20", "0 20"},  {"%i:%v", "eth1:1", "0 1"},    {"%i:%v", "eth1:21", "none"},
                {"%i:%v", "eth1:020", "none"}, {"%i:%v", "eth1:20x", "none"}, {"%i:%v", "eth1:", "none"},
                {"%i:%v", "eth10:1", "none"},  {"sw1/%i", "sw1/eth2", "1 1"}, {"sw1/%i", "sw1/eth1", "none"},
                {"port-7", "port-7", "none"},  {"%v%%%i", "20%eth1", "0 20"}, {"%m", "02:00:00:00:00:02", "1 1"},
                {"%v-%v", "20-20", "none"},    {"%i%v%v", "eth12020", "none"}};
    for (const auto& row : rows) {
        const Port port = PortName("circuit-id", row.pattern).portOf(links, row.text);
        EXPECT_EQ(port.isKnown() ? std::to_string(port.link) + " " + std::to_string(port.vlan) : "none", row.port)
            << row.pattern << " " << row.text;
        if (port.isKnown()) {
            EXPECT_EQ(PortName("circuit-id", row.pattern).textOf(links, port), row.text);
        }
    }
}

TEST(FramesOf, FragmentsAtTheMtu) {
    const Octets message(3000, 0x5a);
    for (const char* dst : {"10.20.0.9", "2001:db8:1::9"}) {
        Destination to;
        to.dst = IpGenAddr::fromText(dst);
        to.src = IpGenAddr::fromText(to.dst.isV4() ? "10.20.0.1" : "2001:db8:1::1");
        to.tag = {0x8100, 20};
        const U32 headers = to.dst.isV4() ? 34 : 62, offsetAt = to.dst.isV4() ? 20 : 56;
        Octets payload;
        for (const PktPtr& frame : framesOf(packet(message), to, 1280)) {
            const U16 field = DhcpLib::Wire::load<U16>(*frame, offsetAt);
            EXPECT_LE(frame->bytes(), 1280u + 14);
            EXPECT_EQ(to.dst.isV4() ? (field & 0x1fffu) * 8 : field & 0xfff8u, payload.size()) << dst;
            EXPECT_EQ(frame->vlanTagTci(), 20);
            const Octets bytes = bytesOf(*frame);
            payload.insert(payload.end(), bytes.begin() + headers, bytes.end());
            const bool more = to.dst.isV4() ? (field & 0x2000) != 0 : (field & 1) != 0;
            EXPECT_EQ(more, payload.size() < message.size() + 8) << dst;
        }
        EXPECT_EQ(Octets(payload.begin() + 8, payload.end()), message) << dst;
    }
}

TEST(Links, FollowAddressesAndDevices) {
    World world;
    Links& links = world.context.links;
    links.addressesAre({{1, IpAddr::fromText("10.21.0.1"), 24}});
    EXPECT_EQ(world.arrives(0, frameOf({}, bytesOf(Message4{}))), "relayed giaddr 10.21.0.1 hops 1 circuit-id eth1:1");
    const Octets reply = bytesOf(Message4{.op = 2, .yiaddr = "10.21.0.9", .giaddr = "10.21.0.1"});
    links.deviceIs("eth1", {1, EthAddr(), true, false, 1500});
    EXPECT_EQ(world.arrives(reply, server4), "no-link");
}

/// The error for these arguments; empty if they are accepted.
std::string refusal(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "dhcprelay");
    try {
        settingsOf(static_cast<int>(arguments.size()), arguments.data());
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(Reasons, AreDocumented) {
    std::ifstream file(DHCPLIB_TEST_DATA "/../../docs/dhcprelay.md");
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    for (const ReasonMember& row : Kcore::EnumTable<Reason>::members) {
        const std::string line = "| `" + std::string(row.name) + "` | " + std::string(row.text) + " |\n";
        EXPECT_EQ(page.find(line) != page.npos, row.kind != ReasonKind::silent) << line;
    }
}

TEST(Options, ErrorNamesTheOption) {
    const struct {
        std::vector<const char*> arguments;
        const char* refusal;
    } rows[] = {
        {{"-c", "a", "-s", "10.0.0.1"}, ""},
        {{"-s", "10.0.0.1"}, "no --client"},
        {{"-c", "a", "-s", "10.0.0.1", "--sever", "10.0.0.2"}, "--sever: no such option (did you mean --server?)"},
        {{"-c", "a"}, "no --server"},
        {{"-c", "a", "-c", "a", "-s", "10.0.0.1"}, "--client a: named twice"},
        {{"-c", "a", "-s", "10.0.0.1", "-s", "10.0.0.1"}, "--server 10.0.0.1: named twice"},
        {{"-c", "a", "-s", "10.0.0"}, "--server 10.0.0: not the address of a host"},
        {{"-c", "a", "-s", "10.0.0.1", "--accept-replies-from", "10.0.0.1"},
         "--accept-replies-from 10.0.0.1: named twice"},
        {{"-c", "a", "-s", "fe80::1"}, "--server fe80::1: a link-local address needs --server-interface"},
        {{"-c", "a", "-s", "10.0.0.1", "-6"}, "--ipv6, but no --server with an IPv6 address"},
        {{"-c", "a", "-s", "10.0.0.1", "--trust", "b"}, "--trust b: not a --client"},
        {{"-c", "a", "-s", "10.0.0.1", "--vlans", "a=1,4095"}, "--vlans a=1,4095: not a VLAN number from 1 to 4094"},
        {{"-c", "a", "-s", "10.0.0.1", "--vlans", "a=9-7"}, "--vlans a=9-7: a range that ends before it starts"},
        {{"-c", "a", "-s", "10.0.0.1", "--giaddr", "a:20=::1"}, "--giaddr a:20=::1: not an IPv4 address"},
        {{"-c", "a", "-s", "10.0.0.1", "--remote-id", "%x"}, "--remote-id %x: after % only i, v, m and % are allowed"},
        {{"-c", "a", "-s", "10.0.0.1", "--server-interface", ""}, "--server-interface: must not be empty"},
        {{"-c", "a", "-s", "10.0.0.1", "--option82", "keep"}, "--option82: keep not in {discard,replace}"},
        {{"-c", "a", "-s", "10.0.0.1", "--option82", "replace", "--stats-format", "text"}, ""},
        {{"--config", DHCPLIB_TEST_DATA "/../../agents/dhcprelay/dhcprelay.json"}, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(refusal(row.arguments), row.refusal);
}

}  // namespace

}  // namespace DhcpTest
