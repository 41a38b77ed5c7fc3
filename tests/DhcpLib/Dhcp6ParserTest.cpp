#include "DhcpLib/Dhcp6Parser.h"

#include "DhcpLib/DhcpParser.h"
#include "ParserRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const std::string macs = "33 33 00 01 00 02 02 C1 00 00 0C 01 ", link = macs + "86 DD ";
const std::string ip6 = "60 00 00 00 00 2A 11 01 FE 80 00*13 01 FF 02 00*11 01 00 02 ";
const std::string front = link + ip6 + "02 22 02 23 00 2A 00 00 ", solicit = front + "01 12 34 56 ";
const std::string clientId = "00 01 00 0A 00 03 00 01 02 C1 00 00 0C 01 ";

std::string remoteId(const std::string& len, const std::string& subOption) {
    return "00 25 " + len + " 00 00 7E D9 00 03 00 01 02 AA 00 00 00 01 00*7 05 " + subOption;
}

const std::string linkRead = " etherType=34525 srcMac=02:c1:00:00:0c:01 dstMac=33:33:00:01:00:02",
                  ipRead = linkRead + " vlanId=10 etherHdrLen=14 isIp6=true",
                  addressesRead = " srcIp6=fe80::1 dstIp6=ff02::1:2 ip6HdrLen=40",
                  udpRead =
                      ipRead + " ipProtocol=17" + addressesRead + " isUdp=true udpSrcPort=546 udpDstPort=547 udpLen=42",
                  solicitRead = "true:" + udpRead +
                                " isDhcp6=true dhcp6MsgType=solicit dhcp6Xid=0x123456 dhcp6ClientMsg=true "
                                "dhcp6OptionsOffset=66",
                  clientIdRead =
                      " cIdOption=true cIdOptOffset=66 cIdOptLen=10 cIdDuidType=3 cIdDuidHwType=1 "
                      "cIdDuidllAddr=02:c1:00:00:0c:01",
                  remoteIdRead =
                      " rIdEntno=32473 rIdDuidType=3 rIdDuidHwType=1 rIdDuidllAddr=02:aa:00:00:00:01 "
                      "rIdL3IntfId=5";

struct Row {
    const char* rule;
    std::string frame;
    std::string outcome;
};

TEST(Dhcp6Parser, ReadsWholeAndTruncatedFrames) {
    const std::string cId = " cIdOption=true cIdOptOffset=66 cIdOptLen=";
    const Row rows[] = {
        {"tagged", macs + "81 00 60 1E 86 DD " + ip6,
         "shortUdpHeader:" + linkRead + " tagged=true vlanId=30 etherHdrLen=18 isIp6=true ipProtocol=17" +
             addressesRead + " | 2 IP payload is not UDP, IP Protocol: 17, remaining0"},
        {"second tag", macs + "81 00 00 1E 81 00 00 1F 86 DD " + ip6,
         "notIp: etherType=33024" + linkRead.substr(16) +
             " tagged=true vlanId=30 etherHdrLen=18 | 2 Ethernet payload is not IPv6, Ethertype: 33024"},
        {"reserved VLAN", macs + "81 00 0F FF 86 DD " + ip6,
         "Bridging::VlanIdOrNone::value > 4094 not allowed:" + linkRead + " etherHdrLen=18"},
        {"short IPv6", link + ip6.substr(0, ip6.size() - 3),
         "shortIpHeader:" + ipRead + " | 2 Frame too short for IPv6 header, bytes at hand: 39"},
        {"hop-by-hop", link + "60 00 00 00 00 2A 00 01 FE 80 00*13 01 FF 02 00*11 01 00 02 11 00 01 04 00*12",
         "notUdp:" + ipRead + addressesRead + " | 2 IP payload is not UDP, IP Protocol: 0, remaining16"},
        {"other ports", link + ip6 + "02 23 03 E8 00 2A 00 00 01 12 34 56",
         "notDhcpPort:" + ipRead + " ipProtocol=17" + addressesRead +
             " isUdp=true udpSrcPort=547 udpDstPort=1000 udpLen=42" +
             " | 2 UDP payload is not DHCP packet, UDP src port: 547, UDP dst port: 1000"},
        {"short message", front + "01 12 34",
         "shortMessageHeader:" + udpRead + " | 2 Can't parse DHCP6 payload, remaining:3"},
        {"relay message", front + "0C 12 34 56 00*30 " + clientId,
         "relayMessage:" + udpRead +
             " isDhcp6=true dhcp6MsgType=relayForward dhcp6Xid=0x123456 | 2 Received Invalid MSG typerelayForward"},
        {"no client identifier", solicit + remoteId("00 1E", "01 06 'Et1:10'"), solicitRead},
        // 65535 + 4 moves the cursor back to 3: the option is accepted and ends the walk.
        {"lengths are not looked at", solicit + "00 01 FF FF 00 03", solicitRead + cId + "65535"},
        {"a DUID-EN of any size", solicit + "00 01 00 09 00 02 00 00 11 8B 'abc'",
         solicitRead + cId + "9 cIdDuidType=2 cIdDuidEntno=4491 cIdDuidEntId=abc"},
        {"others of an Ethernet size only", solicit + "00 01 00 09 00 03 00 01 02 C1 00 00 0C",
         solicitRead + cId + "9"},
        {"first of two", solicit + "00 01 00 00 " + clientId, solicitRead + " cIdOption=true cIdOptOffset=66"},
        {"sub-option", solicit + clientId + remoteId("00 1E", "01 06 'Et1:10'"),
         solicitRead + " rIdOption=true rIdOptOffset=80 rIdOptLen=30" + remoteIdRead +
             " rIdL2IntfId=Et1 rIdVlanId=10 l2PortInfoValid=true" + clientIdRead},
        {"another sub-option", solicit + clientId + remoteId("00 1E", "02 06 'Et1:10'"),
         solicitRead + " rIdOption=true rIdOptOffset=80 rIdOptLen=30" + remoteIdRead + clientIdRead +
             " | 1 Can't parse L2 Port info subOptType: 2 subOptValue: Et1:10"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        const auto parse = [](auto& parser, const PktPtr& pkt) { return parser.doParseDhcp6(pkt, accessPort); };
        expectOutcome<Dhcp6PacketParser>(hex(row.frame), parse, row.outcome);
    }
}

TEST(Dhcp6Parser, AcceptsTheKnownMessageTypes) {
    std::string kinds, relays;
    for (unsigned type = 0; type < 256; ++type) {
        Octets frame = hex(front + "00 12 34 56");
        frame[62] = static_cast<U8>(type);
        Dhcp6PacketParser parser(config());
        if (parser.doParseDhcp6(packet(frame), accessPort))
            kinds += std::to_string(type) + (parser.dhcp6ClientMsg() ? "c " : " ");
        else if (parser.rejection() != FrameRejection::unknownMessageType)
            relays += std::to_string(type) + ' ' + Kcore::textOf(parser.rejection()) + ' ';
    }
    EXPECT_EQ(kinds, "1c 2 3c 4 5c 6c 7 8c 9 10 11c ");
    EXPECT_EQ(relays, "12 relayMessage 13 relayMessage ");
}

TEST(Dhcp6Parser, DecodesInterfaceAndVlan) {
    constexpr char noColon[] = "1 intrfaceVlanTlv is in unknown format, colon is missing",
                   edgeColon[] = "1 Invalid interfaceVlan format, start/ends with ':' ",
                   badIntf[] = "1 interfaceVlan has invalid interface: ",
                   badVlan[] = "1 intrfaceVlan has invalid Vlan Id, VlanId in remoteId: ";
    struct Text {
        std::string intf, vlan;  // on either side of the first colon
        unsigned decoded;        // 0 if the text is refused
        std::string why;
    };
    const Text rows[] = {
        {"Port-Channel7/1.2_x", ":1", 1, ""},
        {"E1", ":4094", 4094, ""},
        {"E1", ": \t+010x", 10, ""},
        {"E1", ":-18446744073709551606", 10, ""},
        {"E1", "", 0, noColon},
        {"", ":10", 0, edgeColon},
        {"E1", ":10:", 0, edgeColon},
        {"E1", ":0", 0, badVlan + std::string("0")},
        {"E1", ":4095", 0, badVlan + std::string("4095")},
        {"E1", ":18446744073709551626", 0, badVlan + std::string("18446744073709551626")},
        {"1E", ":10", 0, badIntf + std::string("1E")},
        {std::string(64, 'e'), ":10", 0, badIntf + std::string(64, 'e')},
    };
    for (const Text& row : rows) {
        const std::string text = row.intf + row.vlan;
        Octets frame = hex(solicit + clientId + remoteId("00 00", "01 00 '" + text + "'"));
        frame[83] = static_cast<U8>(Dhcp6Const::minRIdWSubOpt_size + text.size());
        frame[frame.size() - text.size() - 1] = static_cast<U8>(text.size());
        Dhcp6PacketParser parser(config());
        TraceRecorder trace(1);
        EXPECT_TRUE(parser.doParseDhcp6(packet(frame), accessPort));
        const std::string failed = "1 Can't parse L2 Port info subOptType: 1 subOptValue: " + text;
        std::vector<std::string> lines;
        if (row.decoded == 0) lines = {row.why, failed};
        EXPECT_EQ(trace.lines(), lines);
        EXPECT_EQ(parser.l2PortInfoValid(), row.decoded != 0);
        EXPECT_EQ(parser.rIdVlanId().value(), row.decoded);
        EXPECT_EQ(Kcore::textOf(parser.rIdL2IntfId()), row.decoded != 0 ? row.intf : "");
    }
}

TEST(Dhcp6Parser, IdentifiersAreReadWithoutAFrame) {
    const std::string relay = "0C 00*33 ", remote = remoteId("00 1E", "01 06 'Et1:10'");
    struct Message {
        const char* rule;
        std::string bytes;
        U32 end;  // of the message; bytes after it are not read
        std::string read;
    };
    const Message rows[] = {
        {"a client's message", "01 12 34 56 " + clientId + remote, 99, "4+10 02:c1:00:00:0c:01, 18+30 Et1 10 decoded"},
        {"no client identifier is needed", relay + remote, 99, "0+0 00:00:00:00:00:00, 34+30 Et1 10 decoded"},
        {"the first of two", relay + remote + remoteId("00 1E", "01 06 'Et2:20'"), 99,
         "0+0 00:00:00:00:00:00, 34+30 Et1 10 decoded"},
        {"an option that passes the end", relay + remote, 67, "0+0 00:00:00:00:00:00, 0+0  0 noPortText"},
        {"no byte behind a short option", "01 12 34 56 00 25 00 04 00 00 7E D9 " + remote.substr(24), 99,
         "0+0 00:00:00:00:00:00, 4+4  0 noPortText"},
    };
    for (const Message& row : rows) {
        const auto ids = dhcp6Identifiers(packet(hex(row.bytes)), {0, row.end});
        const auto& [c, r] = ids;
        using Kcore::textOf;
        EXPECT_EQ(textOf(c.option.offset) + '+' + textOf(c.option.len) + ' ' + textOf(c.duidllAddr) + ", " +
                      textOf(r.option.offset) + '+' + textOf(r.option.len) + ' ' + textOf(r.l2IntfId) + ' ' +
                      textOf(r.vlanId) + ' ' + textOf(r.portInfo),
                  row.read)
            << row.rule;
    }
    EXPECT_EQ(assertionOf([] { Dhcp6PacketParser(Kcore::CharRange("")); }),
              "DhcpLib/Dhcp6Parser|DhcpLib::Dhcp6PacketParser::Dhcp6PacketParser(Kcore::CharRange)|"
              "No String constructor for Dhcp6PacketParser");
}
static_assert(!std::is_constructible_v<PacketParser, const char*> &&
              !std::is_constructible_v<Dhcp6PacketParser, const char*>);

TEST(Dhcp6Parser, KeepsAttributesThatAParseDoesNotReach) {
    Dhcp6PacketParser parser(config());
    const std::string advertise = front + "02 12 34 57 ", next = solicit + clientId;
    const Row rows[] = {
        {"another DUID", advertise + "00 01 00 09 00 02 00 00 11 8B 'abc'",
         "true: dhcp6MsgType=advertise dhcp6Xid=0x123457 dhcp6ClientMsg=false rIdOption=false cIdOptLen=9 "
         "cIdDuidType=2 "
         "cIdDuidHwType=0 cIdDuidEntno=4491 cIdDuidEntId=abc"},
        {"no client identifier", advertise + remoteId("00 16", ""), "true: cIdOption=false"},
        {"no sub-option", advertise + clientId + remoteId("00 16", ""),
         "true: rIdOption=true rIdOptLen=22 l2PortInfoValid=false cIdOption=true cIdOptLen=10 cIdDuidType=3 "
         "cIdDuidHwType=1 | 1 Can't parse L2 Port info subOptType: 0 subOptValue: "},
    };
    parser.doParseDhcp6(packet(hex(next + remoteId("00 1E", "01 06 'Et1:10'"))), accessPort);
    for (const Row& row : rows)
        EXPECT_EQ(outcomeOf(parser, [&](auto& p) { return p.doParseDhcp6(packet(hex(row.frame)), accessPort); }),
                  row.outcome)
            << row.rule;

    parser.reset();
    EXPECT_TRUE(parser == Dhcp6PacketParser(config()) && parser.bridgingConfig() == config());
}

}  // namespace
