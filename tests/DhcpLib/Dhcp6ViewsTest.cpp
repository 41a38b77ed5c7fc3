#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

ViewKind duidAt(U16 offset) {
    return kindOf<Dhcp6Duid>([offset](const Dhcp6OptionPtr& opt) { return dhcp6DuidFactory(opt, offset); });
}
ViewKind hostAndIntfName(U8 len) {
    return kindOf<Dhcp6RemoteIdHostAndIntfName>(
        [len](const Dhcp6OptionPtr& opt) { return dhcp6RemoteIdHostAndIntfNameFactory(opt, len); });
}
const ViewKind iana = kindOf<Dhcp6Iana>(dhcp6IanaFactory);
const ViewKind iapd = kindOf<Dhcp6Iapd>(dhcp6IapdFactory);
const ViewKind iaAddr = kindOf<Dhcp6IaAddr>(dhcp6IaAddrFactory);
const ViewKind iaPfx = kindOf<Dhcp6IaPfx>(dhcp6IaPfxFactory);
const ViewKind duid = duidAt(4);
const ViewKind remoteId = kindOf<Dhcp6RemoteId>(dhcp6RemoteIdFactory);
const ViewKind remoteIdIntfName = kindOf<Dhcp6RemoteIdIntfName>(dhcp6RemoteIdIntfNameFactory);
const ViewKind vss = kindOf<Dhcp6VirtualSubnetSelection>(dhcp6VirtualSubnetSelectionFactory);
const ViewKind linkLayerAddr = kindOf<DhcpLinkLayerAddr>(dhcpLinkLayerAddrFactory);
const ViewKind vsi = kindOf<Dhcp6VSI>(dhcp6VSIFactory);

const auto address = Kitnet::Ip6Addr::fromText("2001:db8::1:2");
const auto mac = Kitnet::EthAddr::fromText("02:c1:00:00:0c:01");

class Dhcp6ViewsRead : public testing::TestWithParam<ReadRow> {};
TEST_P(Dhcp6ViewsRead, TheseFieldsAndNothingBehindThePacket) { expectRead(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Ia, Dhcp6ViewsRead,
    testing::Values(ReadRow{"Iana", iana, "00 03 00 0C 01 02 03 04 00 00 0E 10 00 00 15 18 00 05",
                            "iaid=16909060 lifetimeT1=3600 lifetimeT2=5400"},
                    ReadRow{"Iapd", iapd, "00 19 00 0C FF FF FF FF 00 00 00 01 00 00 00 02",
                            "iaid=4294967295 lifetimeT1=1 lifetimeT2=2"},
                    ReadRow{"IaAddr", iaAddr, "00 05 00 18 20 01 0D B8 00*8 00 01 00 02 00 00 00 64 00 00 00 C8",
                            "pfxAddr=2001:db8::1:2 prefLifetime=100 validLifetime=200"},
                    ReadRow{"IaPfx", iaPfx, "00 1A 00 19 00 00 00 64 00 00 00 C8 81 20 01 0D B8 00 01 00*10",
                            "prefLifetime=100 validLifetime=200 pfxLen=129 pfxAddr=2001:db8:1::"},
                    // Absent bytes are zeros.
                    ReadRow{"IaAddrCut", iaAddr, "00 05 00 18 20 01 0D",
                            "pfxAddr=2001:d00:: prefLifetime=0 validLifetime=0"}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(
    Duid, Dhcp6ViewsRead,
    testing::Values(
        ReadRow{"Llt", duid, "00 01 00 0E 00 01 00 06 01 02 03 04 02 C1 00 00 0C 01",
                "offset=4 duidType=1 hardwareType=6 duidTime=16909060 llAddr=02:c1:00:00:0c:01 uuid= entno=0 entId="},
        ReadRow{"En", duid, "00 02 00 0A 00 02 00 00 11 8B 'abcd' EE",
                "offset=4 duidType=2 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=4491 entId=abcd"},
        ReadRow{"Ll", duid, "00 01 00 0A 00 03 00 01 02 C1 00 00 0C 01",
                "offset=4 duidType=3 hardwareType=1 duidTime=0 llAddr=02:c1:00:00:0c:01 uuid= entno=0 entId="},
        ReadRow{"Uuid", duid, "00 01 00 12 00 04 '0123456789abcdef' EE",
                "offset=4 duidType=4 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid=0123456789abcdef entno=0 "
                "entId="},
        ReadRow{"OfAnUnknownType", duid, "00 01 00 0A 00 05 00 01 02 C1 00 00 0C 01",
                "offset=4 duidType=5 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=0 entId="},
        // 2 - 6 wraps: the identifier goes on to the packet's end.
        ReadRow{"EnOfLength2", duid, "00 01 00 02 00 02 00 00 11 8B 'abcdef'",
                "offset=4 duidType=2 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=4491 entId=abcdef"},
        ReadRow{"EnDeepInItsOptionCountsFourTooMany", duidAt(8), "00 25 00 0C EE*4 00 02 00 00 11 8B 'ab0123456789'",
                "offset=8 duidType=2 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=4491 "
                "entId=ab0123"},
        ReadRow{"PositionsInTheOptionWrapAt256", duidAt(254), "00 03 01 02 03 04 05 06 A5*246 00 03",
                "offset=254 duidType=3 hardwareType=3 duidTime=0 llAddr=01:02:03:04:05:06 uuid= entno=0 entId="},
        ReadRow{"AnOffsetAbove255IsItsLowByte", duidAt(260), "00 01 00 02 00 05",
                "offset=260 duidType=5 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=0 entId="}),
    [](const auto& row) { return row.param.rule; });

/// A remote-id that opens with the enterprise number and a DUID-LL.
std::string remoteIdOf(const std::string& len, const std::string& rest) {
    return "00 25 " + len + " 00 00 7E D9 00 03 00 01 02 C1 00 00 0C 01 " + rest;
}
std::string remoteIdRead(const std::string& rest) {
    return "entno=32473 duid=present " + rest +
           " {offset=8 duidType=3 hardwareType=1 duidTime=0 llAddr=02:c1:00:00:0c:01 uuid= entno=0 entId=}";
}

INSTANTIATE_TEST_SUITE_P(
    RemoteId, Dhcp6ViewsRead,
    testing::Values(
        ReadRow{"WithoutSubOption", remoteId, remoteIdOf("00 16", "01*8 01 04 'Et1:'"),
                remoteIdRead("interfaceId=72340172838076673 subOptType=0 subOptLen=0 subOptValue=")},
        ReadRow{"SubOptionIsCutAtTheOptionsEnd", remoteId, remoteIdOf("00 1E", "00*7 02 01 0A 'Et1:10' EE*4"),
                remoteIdRead("interfaceId=2 subOptType=1 subOptLen=10 subOptValue=Et1:10")},
        ReadRow{"SubOptionOfItsOwnLength", remoteId, remoteIdOf("00 1E", "00*8 07 02 'Et1:10'"),
                remoteIdRead("interfaceId=0 subOptType=7 subOptLen=2 subOptValue=Et")},
        ReadRow{"SubOptionIsCutAtThePacketsEnd", remoteId, remoteIdOf("FF FF", "00*8 01 0A 'Et1'"),
                remoteIdRead("interfaceId=0 subOptType=1 subOptLen=10 subOptValue=Et1")},
        ReadRow{"NoRoomForTheSubOptionsLength", remoteId, remoteIdOf("00 17", "00*8 01 0A 'Et1'"),
                remoteIdRead("interfaceId=0 subOptType=0 subOptLen=0 subOptValue=")},
        ReadRow{"ShorterThanItsLayout", remoteId, "00 25 00 04 00 00 7E D9 00 03 00 01",
                "entno=32473 duid=present interfaceId=0 subOptType=0 subOptLen=0 subOptValue= {offset=8 duidType=3 "
                "hardwareType=1 duidTime=0 llAddr=00:00:00:00:00:00 uuid= entno=0 entId=}"},
        ReadRow{"IntfName", remoteIdIntfName, remoteIdOf("00 11", "'Et1' EE"), remoteIdRead("interfaceName=Et1")},
        // Lengths are worked out in 8 bits: 270 is 14 there, and 13 - 14 is 255.
        ReadRow{"IntfNameOfLength270", remoteIdIntfName, remoteIdOf("01 0E", "'Et1'"), remoteIdRead("interfaceName=")},
        ReadRow{"IntfNameOfLength13", remoteIdIntfName, remoteIdOf("00 0D", "'x'*256"),
                remoteIdRead("interfaceName=" + std::string(255, 'x'))},
        ReadRow{"HostAndIntfName", hostAndIntfName(5), remoteIdOf("00 00", "'sw:Et1'"),
                remoteIdRead("hostAndIntfNameLen=5 hostAndIntfName=sw:Et")}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(Others, Dhcp6ViewsRead,
                         testing::Values(ReadRow{"Vss", vss, "00 44 00 05 00 'blue' EE", "vssType=0 vrfName=blue"},
                                         ReadRow{"VssOfLength1", vss, "00 44 00 01 07 'blue'", "vssType=7 vrfName="},
                                         // A length of 0 leaves 255 bytes, or those up to the packet's end.
                                         ReadRow{"VssOfLength0", vss, "00 44 00 00 07 'blue'",
                                                 "vssType=7 vrfName=blue"},
                                         ReadRow{"VssOfLength101", vss, "00 44 00 65 07 'x'*100 EE",
                                                 "vssType=7 vrfName=" + std::string(100, 'x')},
                                         ReadRow{"LinkLayerAddr", linkLayerAddr, "00 4F 00 08 00 01 02 C1 00 00 0C 01",
                                                 "llAddrType=1 llAddr=02:c1:00:00:0c:01"},
                                         ReadRow{"Vsi", vsi, "00 11 00 04 00 00 11 8B", "entno=4491"}),
                         [](const auto& row) { return row.param.rule; });

TEST(Dhcp6Vss, RaisesForANameOfMoreThan100Bytes) {
    constexpr char tooLong[] = "Tyk::String::bytes > maxLength() not allowed";
    const auto make = [](const std::string& option) {
        return refusalOf([&] { dhcp6VirtualSubnetSelectionFactory(dhcp6OptionFactory(packet(hex(option)), 0)); });
    };
    EXPECT_EQ(make("00 44 00 66 00 'x'*101"), tooLong);
    EXPECT_EQ(make("00 44 00 00 00 'x'*101"), tooLong);
    EXPECT_EQ(make("00 44 00 66 00 'x'*100"), "");
    EXPECT_EQ(Dhcp6VirtualSubnetSelection::memAllocationTracker_.live(), 0u);
}

class Dhcp6ViewsWrite : public testing::TestWithParam<WriteRow> {};
TEST_P(Dhcp6ViewsWrite, TheseBytesOrNone) { expectWritten(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Ia, Dhcp6ViewsWrite,
    testing::Values(WriteRow{"IanaIaid", iana, "00 03 00 0C A5*12 A5", setting<Dhcp6Iana>([](auto& v) { v.iaidIs(5); }),
                             "00 03 00 0C 00 00 00 05 A5*8 A5"},
                    WriteRow{"IapdIaid", iapd, "00 19 00 0C A5*13",
                             setting<Dhcp6Iapd>([](auto& v) { v.iaidIs(0x01020304); }), "00 19 00 0C 01 02 03 04 A5*9"},
                    WriteRow{"IaAddrAddress", iaAddr, "00 05 00 18 A5*25",
                             setting<Dhcp6IaAddr>([](auto& v) { v.pfxAddrIs(address); }),
                             "00 05 00 18 20 01 0D B8 00*8 00 01 00 02 A5*9"},
                    WriteRow{"IaAddrValid", iaAddr, "00 05 00 18 A5*25",
                             setting<Dhcp6IaAddr>([](auto& v) { v.validLifetimeIs(0x01020304); }),
                             "00 05 00 18 A5*20 01 02 03 04 A5"},
                    WriteRow{"IaPfxValid", iaPfx, "00 1A 00 19 A5*26",
                             setting<Dhcp6IaPfx>([](auto& v) { v.validLifetimeIs(0x01020304); }),
                             "00 1A 00 19 A5*4 01 02 03 04 A5*18"},
                    WriteRow{"IaPfxLen", iaPfx, "00 1A 00 19 A5*26",
                             setting<Dhcp6IaPfx>([](auto& v) { v.pfxLenIs(255); }), "00 1A 00 19 A5*8 FF A5*17"},
                    WriteRow{"IaPfxPrefix", iaPfx, "00 1A 00 19 A5*26",
                             setting<Dhcp6IaPfx>([](auto& v) { v.pfxAddrIs(address); }),
                             "00 1A 00 19 A5*9 20 01 0D B8 00*8 00 01 00 02 A5"}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(
    Duid, Dhcp6ViewsWrite,
    testing::Values(
        WriteRow{"Type", duid, "00 01 00 0A 00 05 A5*8", setting<Dhcp6Duid>([](auto& v) { v.duidTypeIs(0x0506); }),
                 "00 01 00 0A 05 06 A5*8"},
        WriteRow{"LltHardwareType", duid, "00 01 00 0E 00 01 A5*13",
                 setting<Dhcp6Duid>([](auto& v) { v.hardwareTypeIs(0x0102); }), "00 01 00 0E 00 01 01 02 A5*11", 6},
        WriteRow{"LltTime", duid, "00 01 00 0E 00 01 A5*13",
                 setting<Dhcp6Duid>([](auto& v) { v.duidTimeIs(0x01020304); }),
                 "00 01 00 0E 00 01 A5*2 01 02 03 04 A5*7", 6},
        WriteRow{"LltMac", duid, "00 01 00 0E 00 01 A5*13", setting<Dhcp6Duid>([](auto& v) { v.llAddrIs(mac); }),
                 "00 01 00 0E 00 01 A5*6 02 C1 00 00 0C 01 A5", 6},
        WriteRow{"LlMac", duid, "00 01 00 0A 00 03 A5*9", setting<Dhcp6Duid>([](auto& v) { v.llAddrIs(mac); }),
                 "00 01 00 0A 00 03 A5*2 02 C1 00 00 0C 01 A5", 6},
        WriteRow{"Uuid", duid, "00 01 00 12 00 04 A5*17",
                 setting<Dhcp6Duid>([](auto& v) { v.uuidIs("0123456789abcdef"); }),
                 "00 01 00 12 00 04 '0123456789abcdef' A5", 6},
        WriteRow{"EnNumber", duid, "00 01 00 0A 00 02 A5*9", setting<Dhcp6Duid>([](auto& v) { v.entnoIs(0x01020304); }),
                 "00 01 00 0A 00 02 01 02 03 04 A5*5", 6},
        WriteRow{"EnIdentifier", duid, "00 01 00 0A 00 02 A5*9", setting<Dhcp6Duid>([](auto& v) { v.entIdIs("abcd"); }),
                 "00 01 00 0A 00 02 A5*4 'abcd' A5", 6},
        WriteRow{"InARemoteId", duidAt(8), "00 25 00 0E A5*4 00 03 A5*9",
                 setting<Dhcp6Duid>([](auto& v) { v.llAddrIs(mac); }),
                 "00 25 00 0E A5*4 00 03 A5*2 02 C1 00 00 0C 01 A5", 10}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(
    Others, Dhcp6ViewsWrite,
    testing::Values(
        WriteRow{"Entno", remoteId, remoteIdOf("00 16", "A5*9"),
                 setting<Dhcp6RemoteId>([](auto& v) { v.entnoIs(0x01020304); }),
                 "00 25 00 16 01 02 03 04 00 03 00 01 02 C1 00 00 0C 01 A5*9"},
        WriteRow{"InterfaceId", remoteId, remoteIdOf("00 16", "A5*9"),
                 setting<Dhcp6RemoteId>([](auto& v) { v.interfaceIdIs(0x0102030405060708); }),
                 remoteIdOf("00 16", "01 02 03 04 05 06 07 08 A5")},
        WriteRow{"SubOption", remoteId, remoteIdOf("00 1E", "A5*17"),
                 setting<Dhcp6RemoteId>([](auto& v) { v.subOptValueIs("Et1:10"); }),
                 remoteIdOf("00 1E", "A5*8 01 06 'Et1:10'") + " A5"},
        WriteRow{"IntfName", remoteIdIntfName, remoteIdOf("00 11", "A5*4"),
                 setting<Dhcp6RemoteIdIntfName>([](auto& v) { v.interfaceNameIs("Et1"); }),
                 remoteIdOf("00 11", "'Et1' A5")},
        WriteRow{"HostAndIntfName", hostAndIntfName(5), remoteIdOf("00 13", "A5*6"),
                 setting<Dhcp6RemoteIdHostAndIntfName>([](auto& v) { v.hostAndIntfNameIs("sw:E1"); }),
                 remoteIdOf("00 13", "'sw:E1' A5")},
        WriteRow{"VssType", vss, "00 44 00 05 A5*6",
                 setting<Dhcp6VirtualSubnetSelection>([](auto& v) { v.vssTypeIs(255); }), "00 44 00 05 FF A5*5"},
        WriteRow{"VssName", vss, "00 44 00 05 A5*6",
                 setting<Dhcp6VirtualSubnetSelection>([](auto& v) { v.vrfNameIs("blue"); }),
                 "00 44 00 05 A5 'blue' A5"},
        WriteRow{"LinkLayerType", linkLayerAddr, "00 4F 00 08 A5*9",
                 setting<DhcpLinkLayerAddr>([](auto& v) { v.llAddrTypeIs(0x0102); }), "00 4F 00 08 01 02 A5*7"},
        WriteRow{"LinkLayerMac", linkLayerAddr, "00 4F 00 08 A5*9",
                 setting<DhcpLinkLayerAddr>([](auto& v) { v.llAddrIs(mac); }), "00 4F 00 08 A5*2 02 C1 00 00 0C 01 A5"},
        WriteRow{"VsiEntno", vsi, "00 11 00 04 A5*5", setting<Dhcp6VSI>([](auto& v) { v.entnoIs(4491); }),
                 "00 11 00 04 00 00 11 8B A5"}),
    [](const auto& row) { return row.param.rule; });

TEST(Dhcp6Duid, RefusesFieldsThatItsTypeDoesNotHave) {
    constexpr char noUuid[] = "Duiduuid is set for a invalid duidType";
    constexpr char noEntId[] = "DuidentId is set for a invalid duidType";
    struct Refusal {
        std::function<void(Dhcp6Duid&)> set;
        std::vector<U16> allowed;
        const char* message;
    };
    const std::vector<Refusal> refusals{
        {[](auto& v) { v.hardwareTypeIs(1); }, {1, 3}, "DuidHardwareType is set for a invalid duidType"},
        {[](auto& v) { v.duidTimeIs(1); }, {1}, "DuidTime is set for invalid duidType"},
        {[](auto& v) { v.llAddrIs(mac); }, {1, 3}, "DuidllAddr is set for invalid duidType"},
        {[](auto& v) { v.entnoIs(1); }, {2}, "Duidentno is set for a invalid duidType"},
        {[](auto& v) { v.uuidIs("0123456789abcdef"); }, {4}, noUuid},
        {[](auto& v) { v.entIdIs("123456"); }, {2}, noEntId},
        // The type is judged before the size.
        {[](auto& v) { v.uuidIs("0123456789abcde"); }, {}, noUuid},
        {[](auto& v) { v.entIdIs("12345"); }, {}, noEntId}};
    for (const Refusal& refusal : refusals) {
        for (const U16 type : std::vector<U16>{0, 1, 2, 3, 4, 5, 0x0102}) {
            if (refusal.allowed.empty() && type == (refusal.message == noUuid ? 4 : 2)) continue;
            const PktPtr pkt = packet(hex("00 01 00 0C A5*20"));
            const auto view = dhcp6DuidFactory(dhcp6OptionFactory(pkt, 0), 4);
            view->duidTypeIs(type);
            const Octets before = bytesOf(*pkt);
            const bool allowed = std::ranges::count(refusal.allowed, type) != 0;
            EXPECT_EQ(internalErrorOf([&] { refusal.set(*view); }), allowed ? "" : refusal.message) << type;
            EXPECT_EQ(bytesOf(*pkt) == before, !allowed) << type;
        }
    }
    const auto view = dhcp6DuidFactory(dhcp6OptionFactory(packet(hex("00 01 00 0C A5*20")), 0), 4);
    view->duidTypeIs(Dhcp6Const::duidType_uuid);
    for (const char* uuid : {"", "0123456789abcde", "0123456789abcdefg"})
        EXPECT_EQ(internalErrorOf([&] { view->uuidIs(uuid); }), "Duiduuid is set for a invalid length");
    view->duidTypeIs(Dhcp6Const::duidType_en);
    // The length in the packet decides, not the one that the option's view has kept.
    view->opt()->pkt()->data()[3] = 10;
    for (const char* entId : {"", "abc", "abcde"})
        EXPECT_EQ(internalErrorOf([&] { view->entIdIs(entId); }),
                  "entId's length is mismatch with the client-ID's optionLength");
    EXPECT_EQ(view->entId(), "");
}

TEST(Dhcp6RemoteId, HoldsOneDuidView) {
    const auto opt = dhcp6OptionFactory(packet(hex("00 25 00 16 A5*40")), 0);
    const auto view = dhcp6RemoteIdIntfNameFactory(opt);
    const Dhcp6Duid::Ptr first = view->duid();
    EXPECT_EQ(view->duidIs(opt, 8), first);
    const Dhcp6Duid::Ptr deeper = view->duidIs(opt, 9);
    EXPECT_TRUE(deeper != first && view->duid() == deeper && deeper->offset() == 9);
    EXPECT_NE(view->duidIs(dhcp6OptionFactory(opt->pkt(), 0), 9), deeper);
    const Dhcp6Duid::Ptr held = view->duid();
    EXPECT_EQ(view->duidDel(), held);
    EXPECT_EQ(view->duid(), nullptr);
    EXPECT_EQ(view->duidDel(), nullptr);
}

TEST(Dhcp6RemoteId, TextsOfOddSizes) {
    const PktPtr pkt = packet(hex("00 25 00 13 A5*290"));
    const auto opt = dhcp6OptionFactory(pkt, 0);
    const auto named = Dhcp6RemoteIdHostAndIntfName::Dhcp6RemoteIdHostAndIntfNameIs(opt, 5);
    named->hostAndIntfNameIs("sw");
    EXPECT_EQ(bytesOf(*pkt), hex("00 25 00 13 A5*14 'sw' 00*3 A5*271"));
    EXPECT_EQ(named->hostAndIntfName(), "sw");
    named->hostAndIntfNameIs("sw:Et1");
    EXPECT_EQ(bytesOf(*pkt), hex("00 25 00 13 A5*14 'sw:Et' A5*271"));
    const auto view = dhcp6RemoteIdFactory(opt);
    view->subOptValueIs(Kcore::String(std::string(260, 'v')));
    EXPECT_EQ(bytesOf(*pkt), hex("00 25 00 13 A5*14 'sw:Et' A5*3 01 04 'v'*260 A5*6"));
    EXPECT_EQ(view->subOptLen(), 4);
    EXPECT_EQ(view->subOptValue().size(), 260u);
}

}  // namespace
