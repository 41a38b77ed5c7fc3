#include "DhcpLib/DhcpParser.h"

#include "ParserRows.h"
#include "platform/Refusal.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const Octets macs = hex("02*6 04*6"), untagged = macs + hex("08 00"), udp = hex("00 44 00 43 00*4");
const Octets tag20 = macs + hex("81 00 60 14 08 00");
Octets ip(std::string_view first = "45", std::string_view protocol = "11", std::string_view options = "") {
    return hex(first) + hex("00*8") + hex(protocol) + hex("00 00 0A 00 00 01 0A 00 00 02") + hex(options);
}
const Octets frame = untagged + ip() + udp, bootp = hex("02 00*299"), rest = ip() + udp + bootp;
/// A message from client 00:11:22:33:44:55 with these options.
Octets offer(std::string_view options) {
    return hex("02 01 06 00 01 02 03 04 00*4 0A 00 00 05 0A 00 00 06 00*4 0A 00 00 07 00 11 22 33 44 55 00*202 "
               "63 82 53 63") +
           hex(options);
}

const std::string macsRead = "srcMac=04:04:04:04:04:04 dstMac=02:02:02:02:02:02", ether = " etherType=2048 " + macsRead,
                  ipRead = " isIp=true ipProtocol=17 srcIp=10.0.0.1 dstIp=10.0.0.2 ipHdrLen=20",
                  udpRead = " isUdp=true udpSrcPort=68 udpDstPort=67 udpHdrLen=8",
                  bootpRead = " dhcpOpType=bootpRep dhcpMsgType=BOOTP";

TEST(DhcpParser, ReadsOrRefusesHeaders) {
    struct Row {
        const char* rule;
        Kitnet::IntfId intf;
        int tpid, tci;  // out-of-band tag; -1: none
        Octets bytes;
        std::string outcome;
    };
    const std::string refused = ":" + ether + " vlanId=10 etherHdrLen=14 isIp=true",
                      addresses = " srcIp=10.0.0.1 dstIp=10.0.0.2", noPayload = refused + ipRead.substr(10) + udpRead;
    const Row rows[] = {
        {"tag in the frame", accessPort, -1, 0, tag20 + rest,
         "true:" + ether + " tagged=true vlanId=20 etherHdrLen=18" + ipRead + udpRead + bootpRead + " offset=46"},
        {"tag on a tunnel port", tunnelPort, -1, 0, tag20 + rest,
         "true:" + ether + " vlanId=30 etherHdrLen=18" + ipRead + udpRead + bootpRead + " offset=46"},
        {"tag beside the frame", accessPort, 0x8100, 0x3014, untagged + rest,
         "true:" + ether + " tagged=true vlanId=20 etherHdrLen=14" + ipRead + udpRead + bootpRead + " offset=42"},
        {"a tag of another TPID hides the one in the frame", accessPort, 0x88a8, 20, tag20 + rest,
         "notIp: etherType=33024 " + macsRead +
             " vlanId=10 etherHdrLen=14 offset=14 | 2 Ethernet payload is not IP, Ethertype: 33024"},
        {"unknown interface", unknownPort, -1, 0, untagged + rest,
         "portNotConfigured: | 1 Missing switchIntfConfig for Ethernet9, cannot find Native VlanId, aborting parse"},
        {"not UDP", accessPort, -1, 0, untagged + ip("45", "06") + udp + bootp,
         "notUdp" + refused + " ipProtocol=6" + addresses +
             " ipHdrLen=20 offset=34 | 2 IP payload is not UDP, IP Protocol: 6"},
        {"the source port does not count", accessPort, -1, 0, untagged + ip() + hex("00 43 03 E8 00*4") + bootp,
         "notDhcpPort" + refused + ipRead.substr(10) +
             " isUdp=true udpSrcPort=67 udpDstPort=1000 udpHdrLen=8 offset=42 | 2 UDP payload is not DHCP packet, UDP "
             "src port: 67, UDP dst port: 1000"},
        {"IP header of length 0", accessPort, -1, 0, untagged + ip("40") + udp + bootp,
         "notDhcpPort" + refused + " ipProtocol=17" + addresses +
             " isUdp=true udpSrcPort=16384 udpHdrLen=8 offset=22 | 2 UDP payload is not DHCP packet, UDP src port: "
             "16384, UDP dst port: 0"},
        {"longest IP header passes the frame", accessPort, -1, 0, untagged + ip("4F"),
         "shortIpHeader" + refused + " offset=14 | 2 Frame too short for IPv4 header, bytes at hand: 20"},
        {"header cut", accessPort, -1, 0, frame + Octets(33),
         "shortMessageHeader" + noPayload +
             " isDhcp=true offset=42 | 2 Frame too short for BOOTP header, bytes at hand: 33"},
        {"tag cut", accessPort, -1, 0, macs + hex("81 00 00 05 08"),
         "shortEthernetHeader: | 2 Frame too short for Ethernet header, bytes at hand: 17"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        const auto parse = [&](PacketParser& parser, const PktPtr& pkt) {
            if (row.tpid >= 0) pkt->vlanTagIs(static_cast<U16>(row.tpid), static_cast<U16>(row.tci));
            return parser.doParse(pkt, row.intf, false);
        };
        expectOutcome<PacketParser>(row.bytes, parse, row.outcome);
    }
}

TEST(DhcpParser, TurnsOptionsIntoAttributes) {
    const std::string in = "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, ",
                      noIds = " | 1 Option-82 information does not have CircuitId and/or RemoteId, CircuitId len: ";
    struct Row {
        const char *rule, *options;
        std::string outcome;  // without the header fields
    };
    const std::string fields = " xid=16909060 chaddr=00:11:22:33:44:55 ciaddr=10.0.0.5 yiaddr=10.0.0.6 giaddr=10.0.0.7",
                      offerRead = " dhcpMsgType=DHCPOFFER dhcpMsgTypeOpt=2" + fields;
    const Row rows[] = {
        {"everything",
         "35 01 02 33 04 00 00 00 3C 5B 04 00 00 00 07 36 04 0A 00 00 08 5C 08 0A 00 00 0A 0A 00 00 09 "
         "0C 02 'pc' 37 02 01 79 3C 01 'x' 52 07 01 02 'ab' 02 01 'c' FF 00",
         offerRead + " circuitId=ab remoteId=c serverId=10.0.0.8 serverIdExist=true leaseTime=60 leaseTimeExist=true "
                     "lastTransactionTime=7 lastTransactionTimeExist=true associatedIps=[10.0.0.9, 10.0.0.10] "
                     "hostname=pc paramReqList=1,121 vendorClassId=x offset=42"},
        {"the override takes precedence over option 54",
         "35 01 02 36 04 0A 00 00 08 52 0B 01 03 'abc' 0B 04 0A 00 00 0B FF 00",
         offerRead + " circuitId=abc serverId=10.0.0.11 serverIdExist=true offset=42 | 1 server ID override10.0.0.11" +
             noIds + "3, RemoteId len: 0"},
        {"malformed vendor block", "35 01 02 52 0A 09 08 00 00 7E D9 03 02 01 00 FF 00",
         offerRead + " offset=42 | 1 parseInfoOptNew vs subopt src vtep malformed " + noIds + "0, RemoteId len: 0"},
        {"no end", "35 01 02",
         " dhcpMsgType=INVALID DHCP" + fields + " offset=42 | 1 " + in +
             "std::vector<DhcpLib::DhcpSingleOptionWithCode>&) DHCP packet missing end option | 1 " + in +
             "std::vector<DhcpLib::DhcpSingleOptionWithCode>&) DHCP packet missing end option | 2 DHCP packet option "
             "format is invalid"},
    };
    for (const Row& row : rows) {
        PacketParser parser(config());
        const std::string outcome = outcomeOf(
            parser, [&](PacketParser& p) { return p.doParse(packet(frame + offer(row.options)), accessPort, false); });
        const std::string read = ether + " vlanId=10 etherHdrLen=14" + ipRead + udpRead;
        EXPECT_EQ(outcome, (parser.dhcpMsgTypeOpt() == 0 ? "noEndOption:" : "true:") + read +
                               " isDhcp=true dhcpOpType=bootpRep" + row.outcome)
            << row.rule;
    }
}

TEST(DhcpParser, KeepsAttributesThatAParseDoesNotReach) {
    PacketParser parser(config());
    const auto parse = [&](const Octets& bytes, bool headerOnly) {
        return parser.doParse(packet(bytes), accessPort, headerOnly);
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

    // The options of a bare message are searched after the header lengths of the previous parse; its fields are at the
    // start.
    EXPECT_TRUE(parse(offer("") + Octets(38) + hex("63 82 53 63 35 01 05 FF"), true));
    EXPECT_TRUE(parser.dhcpMsgType() == "DHCPACK" && parser.offset() == 0 && !parser.isDhcp());
    EXPECT_EQ(Kcore::textOf(parser.xid()), "16909060");

    const auto texts = offer("35 01 02 0C 01 'h' 37 01 03 3C 01 'v' 5C 04 0A 00 00 0A 52 06 01 01 'a' 02 01 'b' FF");
    EXPECT_TRUE(parse(frame + texts, false));
    parser.reset();
    EXPECT_TRUE(parser == PacketParser(config()) && parser.bridgingConfig() == config());
}

TEST(DhcpParser, StagesCanBeCalledAlone) {
    PacketParser parser(nullptr);
    EXPECT_FALSE(parser);
    EXPECT_EQ(parser.offsetInc(65535), 65535);
    EXPECT_EQ(parser.offsetInc(3), 2);
    EXPECT_TRUE(parser.doParseIpHdr(packet(hex("EE EE") + ip())));
    EXPECT_TRUE(parser.doParseUdpHdr(packet(Octets(22) + udp)));
    EXPECT_EQ(parser.offset(), 30);
    EXPECT_EQ(parser.rejection(), FrameRejection::none);
    EXPECT_FALSE(parser.doParseUdpHdr(packet(Octets(37))));
    EXPECT_EQ(parser.rejection(), FrameRejection::shortUdpHeader);
    EXPECT_FALSE(parser.doParseEthHdr(packet(macs), accessPort, true));  // no configuration, no native VLAN
    EXPECT_TRUE(parser.offset() == 0 && parser.rejection() == FrameRejection::portNotConfigured);
    EXPECT_FALSE(parser.doParse(packet(first(bootp, 236)), noPort, true));
    EXPECT_EQ(parser.rejection(), FrameRejection::noOptionSpace);
    EXPECT_EQ(refusalOf([&] { parser.doParse(packet(macs + hex("81 00 FF FF 08 00")), noPort, false); }),
              "Bridging::VlanIdOrNone::value > 4094 not allowed");
    EXPECT_EQ(parser.rejection(), FrameRejection::reservedVlan);
    EXPECT_EQ(assertionOf([] { PacketParser(Kcore::CharRange("PacketParser{}")); }),
              "DhcpLib/DhcpParser|DhcpLib::PacketParser::PacketParser(Kcore::CharRange)|"
              "No String constructor for PacketParser - has collection");
}

}  // namespace
