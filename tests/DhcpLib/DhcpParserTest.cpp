#include "DhcpLib/DhcpParser.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"
#include "platform/Refusal.h"

using namespace DhcpLib;
using namespace DhcpTest;
using Kitnet::IntfId;

namespace {

const IntfId access("Ethernet1"), tunnel("Ethernet2"), unknown("Ethernet9"), none;

/// Ethernet1 is an access port of VLAN 10, Ethernet2 a tunnel port of VLAN 30.
Kcore::Ptr<const Bridging::Config> config() {
    const auto made = Kcore::makeNode<Bridging::Config>();
    made->switchIntfConfigIs(access)->nativeVlanIs(Bridging::VlanId(10));
    made->switchIntfConfigIs(tunnel)->nativeVlanIs(Bridging::VlanId(30));
    made->switchIntfConfigIs(tunnel)->switchportModeIs(Bridging::SwitchportMode::dot1qTunnel);
    return made;
}

/// "name=value " of every attribute that is not what it is in a new parser.
std::string changed(const PacketParser& parser) {
    std::vector<std::string> before;
    const PacketParser fresh(parser.bridgingConfig());
    Kcore::forEachAttribute(fresh, [&](auto, const auto& value) { before.push_back(Kcore::textOf(value)); });
    std::string text;
    std::size_t i = 0;
    Kcore::forEachAttribute(parser, [&](std::string_view name, const auto& value) {
        const std::string now = Kcore::textOf(value);
        if (now != before[i++]) text.append(name).append("=").append(now).append(" ");
    });
    return text;
}

const Octets macs = hex("02*6 04*6"), untagged = macs + hex("08 00");
const Octets udp = hex("00 44 00 43 00*4");
const Octets bootp = hex("02 00*299");
Octets ip(std::string_view first = "45", std::string_view protocol = "11", std::string_view options = "") {
    return hex(first) + hex("00*8") + hex(protocol) + hex("00 00 0A 00 00 01 0A 00 00 02") + hex(options);
}
const Octets frame = untagged + ip() + udp;
/// A message from 00:11:22:33:44:55 to which only the options are to be added.
Octets offer(std::string_view options) {
    return hex("02 01 06 00 01 02 03 04 00*4 0A 00 00 05 0A 00 00 06 00*4 0A 00 00 07 00 11 22 33 44 55 00*202 "
               "63 82 53 63") +
           hex(options);
}
constexpr char headers[] =
    "etherType=2048 srcMac=04:04:04:04:04:04 dstMac=02:02:02:02:02:02 vlanId=10 etherHdrLen=14 isIp=true "
    "ipProtocol=17 srcIp=10.0.0.1 dstIp=10.0.0.2 ipHdrLen=20 isUdp=true udpSrcPort=68 udpDstPort=67 udpHdrLen=8 ";
constexpr char fields[] = "dhcpOpType=bootpRep ";
constexpr char offered[] = "xid=16909060 chaddr=00:11:22:33:44:55 ciaddr=10.0.0.5 yiaddr=10.0.0.6 giaddr=10.0.0.7 ";

struct Headers {
    const char* rule;
    IntfId intf;
    int tpid, tci;  // out of band; -1: none
    Octets bytes;
    bool accepted;
    std::string attributes;  // those named in the test
    const char* why;         // the lines up to level 2
};
class DhcpParserHeaders : public testing::TestWithParam<Headers> {};

TEST_P(DhcpParserHeaders, AreReadOrRefused) {
    const Headers& row = GetParam();
    const auto named = {"tagged",     "vlanId", "etherType",   "etherHdrLen", "ipHdrLen",
                        "udpDstPort", "isDhcp", "dhcpMsgType", "offset"};
    for (std::size_t size = row.bytes.size(); size + 1 > 0; --size) {
        const Octets cut(row.bytes.begin(), row.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        std::string outcome;
        for (const PktPtr& pkt : packets(cut)) {
            if (row.tpid >= 0) pkt->vlanTagIs(static_cast<U16>(row.tpid), static_cast<U16>(row.tci));
            TraceRecorder trace(2);
            PacketParser parser(config());
            const bool accepted = parser.doParse(pkt, row.intf, false);
            std::string here = changed(parser) + (accepted ? "accepted" : "refused"), why;
            for (const std::string& line : trace.lines()) why += line;
            if (outcome.empty()) outcome = here + why;
            EXPECT_EQ(here + why, outcome) << "cut to " << size;
            EXPECT_EQ(bytesOf(*pkt), cut);
            if (size < row.bytes.size()) continue;
            EXPECT_EQ(accepted, row.accepted);
            EXPECT_EQ(why, row.why);
            std::string attributes;
            Kcore::forEachAttribute(parser, [&](std::string_view name, const auto& value) {
                if (std::ranges::find(named, name) == named.end() || here.find(std::string(name) + '=') == here.npos)
                    return;
                Kcore::appendText(attributes.append(attributes.empty() ? "" : " "), value);
            });
            EXPECT_EQ(attributes, row.attributes) << here;
        }
    }
}

const Octets tag20 = macs + hex("81 00 60 14 08 00"), tag0 = macs + hex("81 00 00 00 08 00");
const Octets rest = ip() + udp + bootp;

INSTANTIATE_TEST_SUITE_P(
    Frames, DhcpParserHeaders,
    testing::Values(
        Headers{"Untagged", access, -1, 0, untagged + rest, true, "2048 10 14 20 67 BOOTP 42", ""},
        Headers{"NoInterface", none, -1, 0, untagged + rest, true, "2048 14 20 67 BOOTP 42", ""},
        Headers{"TagInTheFrame", access, -1, 0, tag20 + rest, true, "2048 true 20 18 20 67 BOOTP 46", ""},
        Headers{"PriorityTag", access, -1, 0, tag0 + rest, true, "2048 true 10 18 20 67 BOOTP 46", ""},
        Headers{"TagOnATunnelPort", tunnel, -1, 0, tag20 + rest, true, "2048 30 18 20 67 BOOTP 46", ""},
        Headers{"TagBesideTheFrame", access, 0x8100, 0x3014, untagged + rest, true, "2048 true 20 14 20 67 BOOTP 42",
                ""},
        Headers{"BesideATunnelPort", tunnel, 0x8100, 20, untagged + rest, true, "2048 30 14 20 67 BOOTP 42", ""},
        Headers{"OtherTagBesideIt", access, 0x88a8, 20, untagged + rest, true, "2048 10 14 20 67 BOOTP 42", ""},
        Headers{"WhichHidesTheOneInside", access, 0x88a8, 20, tag20 + rest, false, "33024 10 14 14",
                "2 Ethernet payload is not IP, Ethertype: 33024"},
        Headers{"NoSecondTag", access, -1, 0, macs + hex("81 00 00 05 81 00 00 06 08 00") + rest, false,
                "33024 true 5 18 18", "2 Ethernet payload is not IP, Ethertype: 33024"},
        Headers{"UnknownInterface", unknown, -1, 0, untagged + rest, false, "",
                "1 Missing switchIntfConfig for Ethernet9, cannot find Native VlanId, aborting parse"},
        Headers{"NotUdp", access, -1, 0, untagged + ip("45", "06") + udp + bootp, false, "2048 10 14 20 34",
                "2 IP payload is not UDP, IP Protocol: 6"},
        Headers{"SourcePortDoesNotCount", access, -1, 0, untagged + ip() + hex("00 43 03 E8 00*4") + bootp, false,
                "2048 10 14 20 1000 42", "2 UDP payload is not DHCP packet, UDP src port: 67, UDP dst port: 1000"},
        Headers{"ToTheClient", access, -1, 0, untagged + ip() + hex("00 01 00 44 00*4") + bootp, true,
                "2048 10 14 20 68 BOOTP 42", ""},
        Headers{"LongestIpHeader", access, -1, 0, untagged + ip("4F", "11", "00*40") + udp + bootp, true,
                "2048 10 14 60 67 BOOTP 82", ""},
        Headers{"IpHeaderOfNothing", access, -1, 0, untagged + ip("40") + udp + bootp, false, "2048 10 14 22",
                "2 UDP payload is not DHCP packet, UDP src port: 16384, UDP dst port: 0"},
        Headers{"IpHeaderPassesTheFrame", access, -1, 0, untagged + ip("4F"), false, "2048 10 14 14",
                "2 Frame too short for IPv4 header, bytes at hand: 20"},
        Headers{"NoPayload", access, -1, 0, frame, false, "2048 10 14 20 67 true 42",
                "2 Frame too short for BOOTP header, bytes at hand: 0"},
        Headers{"HeaderCut", access, -1, 0, frame + Octets(33), false, "2048 10 14 20 67 true 42",
                "2 Frame too short for BOOTP header, bytes at hand: 33"},
        Headers{"Short", access, -1, 0, macs + hex("08"), false, "",
                "2 Frame too short for Ethernet header, bytes at hand: 13"},
        Headers{"TagCut", access, -1, 0, macs + hex("81 00 00 05 08"), false, "",
                "2 Frame too short for Ethernet header, bytes at hand: 17"}),
    [](const auto& row) { return row.param.rule; });

struct Options {
    const char *rule, *options;
    bool accepted;
    std::string attributes;
    std::vector<std::string> lines;  // up to level 2, behind the signature
};
class DhcpParserOptions : public testing::TestWithParam<Options> {};

TEST_P(DhcpParserOptions, BecomeAttributes) {
    for (const PktPtr& pkt : packets(frame + offer(GetParam().options))) {
        TraceRecorder trace(2);
        PacketParser parser(config());
        EXPECT_EQ(parser.doParse(pkt, access, false), GetParam().accepted);
        std::vector<std::string> lines = trace.lines();
        for (std::string& line : lines)
            if (const auto end = line.rfind("&)"); end != line.npos) line.erase(1, end + 1);
        EXPECT_EQ(changed(parser),
                  headers + std::string("isDhcp=true ") + fields + GetParam().attributes + "offset=42 ");
        EXPECT_EQ(lines, GetParam().lines);
    }
}

constexpr char noIds[] =
    "1 Option-82 information does not have CircuitId and/or RemoteId, CircuitId len: 0, RemoteId len: 0";
const std::string offerIs = "dhcpMsgType=DHCPOFFER dhcpMsgTypeOpt=2 " + std::string(offered);

INSTANTIATE_TEST_SUITE_P(
    Messages, DhcpParserOptions,
    testing::Values(
        Options{"Everything",
                "35 01 02 33 04 00 00 00 3C 5B 04 00 00 00 07 36 04 0A 00 00 08 5C 08 0A 00 00 0A 0A 00 00 09 "
                "0C 02 'pc' 37 02 01 79 3C 01 'x' 52 07 01 02 'ab' 02 01 'c' FF 00",
                true,
                offerIs +
                    "circuitId=ab remoteId=c serverId=10.0.0.8 serverIdExist=true leaseTime=60 leaseTimeExist=true "
                    "lastTransactionTime=7 lastTransactionTimeExist=true associatedIps=[10.0.0.9, 10.0.0.10] "
                    "hostname=pc paramReqList=1,121 vendorClassId=x ",
                {}},
        Options{"OverrideGoesBeforeOption54",
                "35 01 02 36 04 0A 00 00 08 52 0B 01 03 'abc' 0B 04 0A 00 00 0B FF 00",
                true,
                offerIs + "circuitId=abc serverId=10.0.0.11 serverIdExist=true ",
                {"1 server ID override10.0.0.11",
                 "1 Option-82 information does not have CircuitId and/or RemoteId, CircuitId len: 3, RemoteId len: 0"}},
        Options{"WrongLengths",
                "35 01 02 33 01 01 36 02 0A 00 52 06 0B 04 00*4 FF 00",
                true,
                offerIs + "serverIdExist=true leaseTimeExist=true ",
                {noIds}},
        Options{"EmptyOption82",
                "35 01 02 52 00 FF 00",
                true,
                offerIs,
                {"1Info opt present but length is zero", "1 Could not parse Dhcp packet for Option-82 information"}},
        Options{"MalformedVendorBlock",
                "35 01 02 52 0A 09 08 00 00 7E D9 03 02 01 00 FF 00",
                true,
                offerIs,
                {"1 parseInfoOptNew vs subopt src vtep malformed ", noIds}},
        Options{"TypeUnknown", "35 01 0E FF 00", true, std::string(offered), {noIds}},
        Options{"NoEnd",
                "35 01 02",
                false,
                "dhcpMsgType=INVALID DHCP " + std::string(offered),
                {"1 DHCP packet missing end option", "1 DHCP packet missing end option",
                 "2 DHCP packet option format is invalid"}}),
    [](const auto& row) { return row.param.rule; });

TEST(DhcpParser, TracesItsProgress) {
    TraceRecorder trace(4);
    PacketParser parser(config());
    parser.doParse(packet(tag0 + rest), access, false);
    EXPECT_EQ(
        trace.lines(),
        (std::vector<std::string>{
            "4 bool DhcpLib::PacketParser::doParse(const Ptr&, Kitnet::IntfId, bool)for srcIntf: Et1 dhcpHdrOnly: "
            "false",
            "4 bool DhcpLib::PacketParser::doParseEthHdr(const Ptr&, Kitnet::IntfId, bool)for srcIntf: Ethernet1 "
            "resetOffset: false",
            "4 Native VlanId is 10 for intf: Et1", "4 Tagged packet with Ethertype: 2048",
            "4 Tagged packet with no VlanId in packet, using native VlanId: 10",
            "4 bool DhcpLib::PacketParser::doParseIpHdr(const Ptr&)",
            "4 Ethernet payload is IP, IP protocol: 17, IP header len: 20",
            "4 bool DhcpLib::PacketParser::doParseUdpHdr(const Ptr&)",
            "4 IP payload is UDP, UDP src port: 68, UDP dst port: 67, UDP header len: 8",
            "4 UDP payload is DHCP, DHCP Op type: bootpRep", "4 UDP payload is BOOTP, No DHCP cookie present "}));
    parser.doParseEthHdr(packet(tag20), tunnel, true);
    parser.doParseEthHdr(packet(tag20), access, true);
    std::string last;
    for (const std::string& line : trace.lines())
        if (line.find("agged") != line.npos) last += line + ';';
    EXPECT_EQ(last,
              "4 Tagged packet with Ethertype: 2048;4 Untagged packet, using native VlanId: 30;"
              "4 Tagged packet with Ethertype: 2048;4 Tagged packet, VlanId in packet: 20;");
}

TEST(DhcpParser, KeepsWhatAParseDoesNotReach) {
    PacketParser parser(config());
    const auto parse = [&](const Octets& bytes, bool headerOnly) {
        return parser.doParse(packet(bytes), access, headerOnly);
    };
    EXPECT_TRUE(parse(frame + offer("35 01 02 33 04 00 00 00 3C 5C 04 0A 00 00 0A 52 03 01 01 'a' FF 00"), false));
    EXPECT_TRUE(parse(frame + offer("5C 04 0A 00 00 09 52 00 FF 00"), false));
    EXPECT_EQ(Kcore::textOf(parser.associatedIps()), "[10.0.0.10, 10.0.0.9]");
    EXPECT_TRUE(parser.circuitId() == "a" && !parser.leaseTimeExist() && parser.leaseTime().count() == 0);
    EXPECT_TRUE(parser.dhcpMsgType().empty() && parser.dhcpMsgTypeOpt() == 0 && parser.isDhcp());
    EXPECT_FALSE(parse(frame + offer("35 01 02"), false));
    EXPECT_EQ(parser.circuitId(), "a");
    EXPECT_TRUE(parse(frame + bootp, false));
    EXPECT_TRUE(!parser.isDhcp() && parser.hostname().empty() && parser.offset() == 42);

    // The options of a bare message are looked for behind the headers of the parse before, the fields at its start.
    EXPECT_TRUE(parse(offer("") + Octets(38) + hex("63 82 53 63 35 01 05 FF"), true));
    EXPECT_TRUE(parser.dhcpMsgType() == "DHCPACK" && parser.offset() == 0 && !parser.isDhcp());
    EXPECT_EQ(Kcore::textOf(parser.xid()), "16909060");
    parser = PacketParser(config());
    EXPECT_TRUE(parse(offer("35 01 05 FF"), true));
    EXPECT_EQ(parser.dhcpMsgType(), "DHCPACK");
}

TEST(DhcpParser, ItsStagesStandAlone) {
    PacketParser parser(nullptr);
    EXPECT_FALSE(parser);
    EXPECT_EQ(parser.offsetInc(65535), 65535);
    EXPECT_EQ(parser.offsetInc(3), 2);
    EXPECT_TRUE(parser);
    EXPECT_TRUE(parser.doParseIpHdr(packet(hex("EE EE") + ip())));
    EXPECT_EQ(parser.offset(), 22);
    EXPECT_TRUE(parser.doParseUdpHdr(packet(Octets(22) + udp)));
    EXPECT_EQ(parser.offset(), 30);
    EXPECT_FALSE(parser.doParseUdpHdr(packet(Octets(37))));
    EXPECT_TRUE(parser.doParseEthHdr(packet(untagged), none, true));
    EXPECT_EQ(parser.offset(), 14);
    EXPECT_FALSE(parser.doParseEthHdr(packet(macs), access, true));  // no configuration, no native VLAN
    EXPECT_EQ(parser.offset(), 0);
    EXPECT_EQ(refusalOf([&] { parser.doParse(packet(macs + hex("81 00 FF FF 08 00")), none, false); }),
              "Bridging::VlanIdOrNone::value > 4094 not allowed");
    EXPECT_EQ(assertionOf([] { PacketParser("PacketParser{}"); }),
              "DhcpLib/DhcpParser|DhcpLib::PacketParser::PacketParser(Kcore::CharRange)|"
              "No String constructor for PacketParser - has collection");
}

TEST(DhcpParser, IsAValue) {
    const auto shared = config();
    PacketParser one(shared), two(shared);
    EXPECT_TRUE(one == two && one);  // the configuration is an attribute, too
    const auto ip1 = Kitnet::IpAddr::fromText("10.0.0.1"), ip2 = Kitnet::IpAddr::fromText("10.0.0.2");
    one.associatedIpsIs(ip1);
    one.associatedIpsIs(ip2);
    one.associatedIpsIs(ip1);
    two = one;
    EXPECT_TRUE(one == two && one.hash() == two.hash());
    EXPECT_EQ(shared->useCount(), 3u);
    one.associatedIpsDel(ip1);
    EXPECT_TRUE(!one.associatedIpsHas(ip1) && one.associatedIpsHas(ip2) && two.associatedIpsHas(ip1));
    EXPECT_FALSE(one == two);
    two.associatedIpsDelAll();
    EXPECT_TRUE(two == PacketParser(shared));
}

}  // namespace
