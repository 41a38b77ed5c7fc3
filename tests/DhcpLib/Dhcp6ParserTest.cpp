#include "DhcpLib/Dhcp6Parser.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Bytes.h"
#include "Kcore/Exception.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const Kitnet::IntfId accessPort("Ethernet1"), tunnelPort("Ethernet2"), unknownPort("Ethernet3");

const Kcore::Ptr<const Bridging::Config>& config() {
    static const Kcore::Ptr<const Bridging::Config> switchConfig = [] {
        const auto made = Kcore::makeNode<Bridging::Config>();
        made->switchIntfConfigIs(accessPort)->nativeVlanIs(Bridging::VlanId(7));
        made->switchIntfConfigIs(tunnelPort)->nativeVlanIs(Bridging::VlanId(9));
        made->switchIntfConfig(tunnelPort)->switchportModeIs(Bridging::SwitchportMode::dot1qTunnel);
        return made;
    }();
    return switchConfig;
}

const std::string macs = "33 33 00 01 00 02 02 C1 00 00 0C 01 ";
const std::string ip6 = "60 00 00 00 00 2A 11 01 FE 80 00*13 01 FF 02 00*11 01 00 02 ";
const std::string udp = "02 22 02 23 00 2A 00 00 ";
const std::string link = macs + "86 DD ";
const std::string front = link + ip6 + udp;
const std::string clientId = "00 01 00 0A 00 03 00 01 02 C1 00 00 0C 01 ";

std::string remoteId(const std::string& len, const std::string& subOption) {
    return "00 25 " + len + " 00 00 7E D9 00 03 00 01 02 AA 00 00 00 01 00*7 05 " + subOption;
}

/// The attributes that differ from those of `before`.
std::string changes(const Dhcp6PacketParser& parser, const Dhcp6PacketParser& before = Dhcp6PacketParser(config())) {
    std::string all;
    for (const auto& attribute : Kcore::typeDataOf<Dhcp6PacketParser>().attributes()) {
        std::string value, other;
        attribute.appendText(value, &parser);
        attribute.appendText(other, &before);
        if (value == other) continue;
        std::string quoted;
        Kcore::appendQuoted(quoted, value);
        all.append(all.empty() ? "" : " ").append(attribute.name).append("=").append(quoted, 1, quoted.size() - 2);
    }
    return all;
}

/// "true", "false" or the range exception's text, then what the parse has changed.
std::string outcomeOf(Dhcp6PacketParser& parser, const PktPtr& pkt, const Kitnet::IntfId& intf = accessPort) {
    const Dhcp6PacketParser before = parser;
    std::string verdict;
    try {
        verdict = parser.doParseDhcp6(pkt, intf) ? "true" : "false";
    } catch (const Kcore::RangeException& e) {
        verdict = e.what();
    }
    return verdict + ": " + changes(parser, before);
}
std::string outcomeOf(const PktPtr& pkt, const Kitnet::IntfId& intf = accessPort) {
    Dhcp6PacketParser parser(config());
    return outcomeOf(parser, pkt, intf);
}

const std::string linkRead = "etherType=34525 srcMac=02:c1:00:00:0c:01 dstMac=33:33:00:01:00:02 ";
const std::string ip6Read = "isIp6=true ipProtocol=17 srcIp6=fe80::1 dstIp6=ff02::1:2 ip6HdrLen=40 ";
const std::string udpRead = "isUdp=true udpSrcPort=546 udpDstPort=547 udpLen=42";
const std::string frontRead = linkRead + "vlanId=7 etherHdrLen=14 " + ip6Read + udpRead + " isDhcp6=true ";
const std::string solicitRead =
    frontRead + "dhcp6MsgType=solicit dhcp6Xid=0x123456 dhcp6ClientMsg=true dhcp6OptionsOffset=66";
const std::string clientIdRead =
    " cIdOption=true cIdOptOffset=66 cIdOptLen=10 cIdDuidType=3 cIdDuidHwType=1 cIdDuidllAddr=02:c1:00:00:0c:01";

struct Row {
    const char* rule;
    std::string frame;
    std::string outcome;
    std::string trace;  ///< the first line of level 1 or 2
};
class Dhcp6ParserFrames : public testing::TestWithParam<Row> {};

TEST_P(Dhcp6ParserFrames, AreReadAsFarAsTheyGo) {
    const Octets frame = hex(GetParam().frame);
    TraceRecorder trace(2);
    EXPECT_EQ(outcomeOf(packet(frame)), GetParam().outcome);
    const auto lines = trace.lines();
    EXPECT_EQ(lines.empty() ? "" : lines[0], GetParam().trace);
    for (std::size_t size = 0; size <= frame.size(); ++size) {
        const Octets cut(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string alone = outcomeOf(packet(cut));
        for (const PktPtr& pkt : packets(cut)) {
            EXPECT_EQ(outcomeOf(pkt), alone) << "cut to " << size << " bytes, with others behind";
            EXPECT_EQ(bytesOf(*pkt), cut);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Headers, Dhcp6ParserFrames,
    testing::Values(
        Row{"Untagged", front + "01 12 34 56 " + clientId, "true: " + solicitRead + clientIdRead, ""},
        Row{"ToTheClientsPort", link + ip6 + "02 23 02 22 00 2A 00 00 02 12 34 56",
            "true: " + linkRead + "vlanId=7 etherHdrLen=14 " + ip6Read +
                "isUdp=true udpSrcPort=547 udpDstPort=546 udpLen=42 isDhcp6=true dhcp6MsgType=advertise "
                "dhcp6Xid=0x123456 dhcp6OptionsOffset=66",
            ""},
        Row{"Tagged", macs + "81 00 60 1E 86 DD " + ip6 + udp + "01 12 34 56 " + clientId,
            "true: " + linkRead + "tagged=true vlanId=30 etherHdrLen=18 " + ip6Read + udpRead +
                " isDhcp6=true dhcp6MsgType=solicit dhcp6Xid=0x123456 dhcp6ClientMsg=true dhcp6OptionsOffset=70"
                " cIdOption=true cIdOptOffset=70 cIdOptLen=10 cIdDuidType=3 cIdDuidHwType=1"
                " cIdDuidllAddr=02:c1:00:00:0c:01",
            ""},
        Row{"PriorityTagged", macs + "81 00 60 00 86 DD " + ip6,
            "false: " + linkRead + "tagged=true vlanId=7 etherHdrLen=18 " + ip6Read.substr(0, ip6Read.size() - 1),
            "2 IP payload is not UDP, IP Protocol: 17, remaining0"},
        Row{"SecondTag", macs + "81 00 00 1E 81 00 00 1F 86 DD " + ip6,
            "false: etherType=33024 srcMac=02:c1:00:00:0c:01 dstMac=33:33:00:01:00:02 tagged=true vlanId=30 "
            "etherHdrLen=18",
            "2 Ethernet payload is not IPv6, Ethertype: 33024"},
        Row{"ReservedVlan", macs + "81 00 0F FF 86 DD " + ip6,
            "Bridging::VlanIdOrNone::value > 4094 not allowed: " + linkRead + "etherHdrLen=18", ""},
        Row{"ShortEthernet", macs + "86", "false: ", "2 Frame too short for Ethernet header, bytes at hand: 13"},
        Row{"ShortIp6", link + ip6.substr(0, ip6.size() - 3),
            "false: " + linkRead + "vlanId=7 etherHdrLen=14 isIp6=true",
            "2 Frame too short for IPv6 header, bytes at hand: 39"},
        Row{"HopByHop", link + "60 00 00 00 00 2A 00 01 FE 80 00*13 01 FF 02 00*11 01 00 02 11 00 01 04 00*4 " + udp,
            "false: " + linkRead + "vlanId=7 etherHdrLen=14 isIp6=true srcIp6=fe80::1 dstIp6=ff02::1:2 ip6HdrLen=40",
            "2 IP payload is not UDP, IP Protocol: 0, remaining16"},
        Row{"ShortUdp", link + ip6 + "02 22 02 23 00 2A 00",
            "false: " + linkRead + "vlanId=7 etherHdrLen=14 " + ip6Read.substr(0, ip6Read.size() - 1),
            "2 IP payload is not UDP, IP Protocol: 17, remaining7"},
        Row{"OtherPorts", link + ip6 + "02 23 03 E8 00 2A 00 00 01 12 34 56",
            "false: " + linkRead + "vlanId=7 etherHdrLen=14 " + ip6Read +
                "isUdp=true udpSrcPort=547 udpDstPort=1000 udpLen=42",
            "2 UDP payload is not DHCP packet, UDP src port: 547, UDP dst port: 1000"},
        Row{"ShortMessage", front + "01 12 34", "false: " + linkRead + "vlanId=7 etherHdrLen=14 " + ip6Read + udpRead,
            "2 Can't parse DHCP6 payload, remaining:3"},
        Row{"RelayMessage", front + "0C 12 34 56 00*30 " + clientId,
            "false: " + frontRead + "dhcp6MsgType=relayForward dhcp6Xid=0x123456",
            "2 Received Invalid MSG typerelayForward"},
        Row{"LengthsAreNotLookedAt", front + "01 12 34 56 00 01 FF FF 00 03",
            // 65535 + 4 turns the cursor back to 3: the option is taken, and is the last one.
            "true: " + solicitRead + " cIdOption=true cIdOptOffset=66 cIdOptLen=65535", ""}),
    [](const auto& row) { return row.param.rule; });

const std::string both = solicitRead + " rIdOption=true rIdOptOffset=80 ";
const std::string remoteIdRead =
    " rIdEntno=32473 rIdDuidType=3 rIdDuidHwType=1 rIdDuidllAddr=02:aa:00:00:00:01 rIdL3IntfId=5";

INSTANTIATE_TEST_SUITE_P(
    Options, Dhcp6ParserFrames,
    testing::Values(
        Row{"NoOptions", front + "01 12 34 56", "true: " + solicitRead, ""},
        Row{"NoClientId", front + "01 12 34 56 " + remoteId("00 1E", "01 06 'Et1:10'"), "true: " + solicitRead, ""},
        Row{"DuidLlt", front + "01 12 34 56 00 01 00 0E 00 01 00 06 01 02 03 04 02 C1 00 00 0C 01",
            "true: " + solicitRead +
                " cIdOption=true cIdOptOffset=66 cIdOptLen=14 cIdDuidType=1 cIdDuidHwType=6"
                " cIdDuidllAddr=02:c1:00:00:0c:01",
            ""},
        Row{"DuidEn", front + "01 12 34 56 00 01 00 09 00 02 00 00 11 8B 'abc'",
            "true: " + solicitRead +
                " cIdOption=true cIdOptOffset=66 cIdOptLen=9 cIdDuidType=2 cIdDuidEntno=4491"
                " cIdDuidEntId=abc",
            ""},
        Row{"DuidUuid", front + "01 12 34 56 00 01 00 12 00 04 '0123456789abcdef'",
            "true: " + solicitRead +
                " cIdOption=true cIdOptOffset=66 cIdOptLen=18 cIdDuidType=4"
                " cIdDuidUuid=0123456789abcdef",
            ""},
        Row{"DuidOfAnUnknownType", front + "01 12 34 56 00 01 00 0A 00 05 00 01 02 C1 00 00 0C 01",
            "true: " + solicitRead + " cIdOption=true cIdOptOffset=66 cIdOptLen=10 cIdDuidType=5", ""},
        // A DUID that is not of an Ethernet size is not looked into.
        Row{"DuidLlOf9Bytes", front + "01 12 34 56 00 01 00 09 00 03 00 01 02 C1 00 00 0C",
            "true: " + solicitRead + " cIdOption=true cIdOptOffset=66 cIdOptLen=9", ""},
        Row{"FirstOfTwoClientIds", front + "01 12 34 56 00 01 00 00 " + clientId,
            "true: " + solicitRead + " cIdOption=true cIdOptOffset=66", ""},
        Row{"NothingBehindCode0", front + "01 12 34 56 00 00 00 00 " + clientId, "true: " + solicitRead, ""},
        Row{"RemoteIdFirst", front + "01 12 34 56 00 25 00 00 " + clientId + remoteId("00 16", ""),
            // Its fields are read, whatever its length: here they are those of the client identifier behind it.
            "true: " + solicitRead +
                " rIdOption=true rIdOptOffset=66 rIdEntno=65546 rIdDuidType=3 rIdDuidHwType=1"
                " rIdDuidllAddr=02:c1:00:00:0c:01 rIdL3IntfId=10414668627607257"
                " cIdOption=true cIdOptOffset=70 cIdOptLen=10 cIdDuidType=3 cIdDuidHwType=1"
                " cIdDuidllAddr=02:c1:00:00:0c:01",
            "1 Can't parse L2 Port info subOptType: 0 subOptValue: "},
        Row{"RemoteIdOfAUuid", front + "01 12 34 56 " + clientId + "00 25 00 16 00 00 7E D9 00 04 '0123456789abcdef'",
            "true: " + both + "rIdOptLen=22 rIdEntno=32473 rIdDuidType=4 rIdL3IntfId=4051376414998685030" +
                clientIdRead,
            "1 Can't parse L2 Port info subOptType: 0 subOptValue: "},
        Row{"OtherSubOption", front + "01 12 34 56 " + clientId + remoteId("00 1E", "02 06 'Et1:10'"),
            "true: " + both + "rIdOptLen=30" + remoteIdRead + clientIdRead,
            "1 Can't parse L2 Port info subOptType: 2 subOptValue: Et1:10"},
        Row{"L2PortInfo", front + "01 12 34 56 " + clientId + remoteId("00 1E", "01 06 'Et1:10'"),
            "true: " + both + "rIdOptLen=30" + remoteIdRead + " rIdL2IntfId=Et1 rIdVlanId=10 l2PortInfoValid=true" +
                clientIdRead,
            ""}),
    [](const auto& row) { return row.param.rule; });

TEST(Dhcp6Parser, TakesTheMessagesOfTheTwoSets) {
    std::string kinds;
    for (unsigned type = 0; type < 256; ++type) {
        Octets frame = hex(front + "00 12 34 56");
        frame[62] = static_cast<U8>(type);
        Dhcp6PacketParser parser(config());
        if (parser.doParseDhcp6(packet(frame), accessPort))
            kinds += std::to_string(type) + (parser.dhcp6ClientMsg() ? "c " : " ");
        EXPECT_EQ(static_cast<unsigned>(parser.dhcp6MsgType()), type);
    }
    EXPECT_EQ(kinds, "1c 2 3c 4 5c 6c 7 8c 9 10 11c ");
}

TEST(Dhcp6Parser, DecodesInterfaceAndVlan) {
    constexpr char noColon[] = "1 intrfaceVlanTlv is in unknown format, colon is missing";
    constexpr char edgeColon[] = "1 Invalid interfaceVlan format, start/ends with ':' ";
    const auto badVlan = [](const std::string& vlan) {
        return "1 intrfaceVlan has invalid Vlan Id, VlanId in remoteId: " + vlan;
    };
    const std::vector<std::pair<std::string, std::string>> rows{
        {"Ethernet1:10", "Ethernet1 10"},
        {"Port-Channel7/1.2_x:1", "Port-Channel7/1.2_x 1"},
        {"Ethernet1:4094", "Ethernet1 4094"},
        {"Ethernet1:10:20", "Ethernet1 10"},
        {"Ethernet1: \t+010x", "Ethernet1 10"},
        {"Ethernet1:-18446744073709551606", "Ethernet1 10"},
        {"Ethernet1", noColon},
        {"", noColon},
        {":10", edgeColon},
        {"Ethernet1:", edgeColon},
        {":", edgeColon},
        {"Ethernet1:10:", edgeColon},
        {"Ethernet1:0", badVlan("0")},
        {"Ethernet1:4095", badVlan("4095")},
        {"Ethernet1:65546", badVlan("65546")},
        {"Ethernet1:4294967306", badVlan("4294967306")},
        {"Ethernet1:18446744073709551626", badVlan("18446744073709551626")},
        {"Ethernet1:-10", badVlan("-10")},
        {"Ethernet1:+-10", badVlan("+-10")},
        {"Ethernet1:- 10", badVlan("- 10")},
        {"Ethernet1:abc", badVlan("abc")},
        {"Ethernet1: ", badVlan(" ")},
        {"1Ethernet:10", "1 interfaceVlan has invalid interface: 1Ethernet"},
        {std::string(64, 'e') + ":10", "1 interfaceVlan has invalid interface: " + std::string(64, 'e')},
    };
    for (const auto& [text, decoded] : rows) {
        Octets frame = hex(front + "01 12 34 56 " + clientId + remoteId("00 00", "01 00"));
        frame[83] = static_cast<U8>(Dhcp6Const::minRIdWSubOpt_size + text.size());
        frame.back() = static_cast<U8>(text.size());
        frame.insert(frame.end(), text.begin(), text.end());
        const PktPtr pkt = packet(frame);
        Dhcp6PacketParser parser(config());
        TraceRecorder trace(1);
        EXPECT_TRUE(parser.doParseDhcp6(pkt, accessPort));
        const auto lines = trace.lines();
        EXPECT_EQ(parser.l2PortInfoValid(), lines.empty());
        if (parser.l2PortInfoValid()) {
            EXPECT_EQ(Kcore::textOf(parser.rIdL2IntfId()) + " " + Kcore::textOf(parser.rIdVlanId()), decoded);
        } else {
            EXPECT_EQ(lines, (std::vector<std::string>{
                                 decoded, "1 Can't parse L2 Port info subOptType: 1 subOptValue: " + text}));
            EXPECT_EQ(parser.rIdVlanId().value(), 0);
            EXPECT_TRUE(parser.rIdL2IntfId().isEmpty());
        }
    }
}

TEST(Dhcp6Parser, TracesItsProgress) {
    TraceRecorder trace(4);
    outcomeOf(packet(hex(front + "01 12 34 56 " + clientId + remoteId("00 1E", "01 06 'Et1:10'"))));
    const std::string signature = "bool DhcpLib::Dhcp6PacketParser::doParseDhcp6(const Ptr&, Kitnet::IntfId)";
    EXPECT_EQ(trace.lines(), (std::vector<std::string>{
                                 "4 " + signature + " for srcIntf: Ethernet1", "4 Native VlanId is 7 for intf: Et1",
                                 "4 Untagged packet with Ethertype: 34525", "4 Untagged packet, using native VlanId: 7",
                                 "4 Ethernet payload is IPv6, protocol: 17IP6 HdrLen 40",
                                 "4 IP payload is UDP, UDP src port: 546, UDP dst port: 547, UDP header len: 42",
                                 "4 UDP payload is DHCP6, DHCP6 Msg type: solicit, XID: 0x123456",
                                 "4  intfVlanStr Et1:10 decodedIntf Et1decodedVlanId 10, Decoded VlanId: 10"}));
    outcomeOf(packet(hex(front + "01 12 34 56")));
    EXPECT_EQ(trace.lines().back(), "4 ClientId option doesn't exist");
    outcomeOf(packet(hex(front + "01 12 34 56 " + clientId)));
    EXPECT_EQ(trace.lines().back(), "4 Option-37 doesn't exist");
}

TEST(Dhcp6Parser, FollowsThePort) {
    const PktPtr tagged = packet(hex(macs + "81 00 60 1E 86 DD"));
    EXPECT_EQ(outcomeOf(tagged, tunnelPort), "false: " + linkRead + "vlanId=9 etherHdrLen=18 isIp6=true");
    EXPECT_EQ(outcomeOf(tagged, Kitnet::IntfId()),
              "false: " + linkRead + "tagged=true vlanId=30 etherHdrLen=18 isIp6=true");
    EXPECT_EQ(outcomeOf(tagged, unknownPort), "false: ");
    const PktPtr stripped = packet(hex(link));
    stripped->vlanTagIs(0x8100, 0x601e);
    EXPECT_EQ(outcomeOf(stripped), "false: " + linkRead + "tagged=true vlanId=30 etherHdrLen=14 isIp6=true");
    stripped->vlanTagIs(0x88a8, 0x601e);
    EXPECT_EQ(outcomeOf(stripped), "false: " + linkRead + "vlanId=7 etherHdrLen=14 isIp6=true");
}

TEST(Dhcp6Parser, KeepsWhatAParseDoesNotReach) {
    Dhcp6PacketParser parser(config());
    outcomeOf(parser, packet(hex(front + "01 12 34 56 " + clientId + remoteId("00 1E", "01 06 'Et1:10'"))));
    EXPECT_EQ(outcomeOf(parser, packet(hex(front + "02 12 34 57 " + clientId))),
              "true: dhcp6MsgType=advertise dhcp6Xid=0x123457 dhcp6ClientMsg=false rIdOption=false");
    EXPECT_EQ(outcomeOf(parser, packet(hex(front + "02 12 34 57 00 01 00 09 00 02 00 00 11 8B 'abc'"))),
              "true: cIdOptLen=9 cIdDuidType=2 cIdDuidHwType=0 cIdDuidEntno=4491 cIdDuidEntId=abc");
    EXPECT_EQ(outcomeOf(parser, packet(hex(front + "02 12 34 57 " + remoteId("00 16", "")))), "true: cIdOption=false");
    EXPECT_EQ(outcomeOf(parser, packet(hex(front + "02 12 34 57 " + clientId + remoteId("00 1E", "01 06 'Et1:99x'")))),
              "true: rIdOption=true rIdVlanId=99 cIdOption=true cIdOptLen=10 cIdDuidType=3 "
              "cIdDuidHwType=1");
    EXPECT_EQ(outcomeOf(parser, packet(hex(front + "02 12 34 57 " + clientId + remoteId("00 16", "")))),
              "true: rIdOptLen=22 l2PortInfoValid=false");
}

TEST(Dhcp6Parser, IsTrueOnceAnythingIsSet) {
    EXPECT_FALSE(Dhcp6PacketParser(nullptr));
    EXPECT_TRUE(Dhcp6PacketParser(config()));
    Dhcp6PacketParser parser(nullptr);
    parser.doParseDhcp6(packet(hex(link)), Kitnet::IntfId());
    EXPECT_TRUE(parser);
    EXPECT_EQ(Kcore::typeDataOf<Dhcp6PacketParser>().attributes().size(), 41u);
}

TEST(Dhcp6Parser, TakesLinearTimeUpTo16000Options) {
    const auto frame = [](U32 options) {
        Octets bytes = hex(front + "01 12 34 56");
        for (U32 code = 1000; code < 1000 + options; ++code)
            bytes.insert(bytes.end(), {static_cast<U8>(code >> 8), static_cast<U8>(code), 0, 0});
        return packet(bytes + hex(clientId), Kitnet::Pkt::Storage::roomy);
    };
    const auto seconds = [](const PktPtr& pkt) {
        double best = 1e9;
        for (int i = 0; i < 20; ++i) {
            Dhcp6PacketParser parser(config());
            const auto start = std::chrono::steady_clock::now();
            EXPECT_TRUE(parser.doParseDhcp6(pkt, accessPort) && parser.cIdOption());
            best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
        return best;
    };
    // Quadratic time would be 256 times as much.
    EXPECT_LT(seconds(frame(16000)), 100 * seconds(frame(1000)));
}

}  // namespace
