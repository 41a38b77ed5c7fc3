#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(Dhcp6Views, ReadIdentityAssociations) {
    const ReadRow iana[] = {{"all", "00 03 00 0C 01 02 03 04 00 00 0E 10 00 00 15 18 00 05",
                             "iaid=16909060 lifetimeT1=3600 lifetimeT2=5400"}},
                  address[] = {{"all", "00 05 00 18 20 01 0D B8 00*8 00 01 00 02 00 00 00 64 00 00 00 C8",
                                "pfxAddr=2001:db8::1:2 prefLifetime=100 validLifetime=200"}},
                  prefix[] = {{"all", "00 1A 00 19 00 00 00 64 00 00 00 C8 81 20 01 0D B8 00 01 00*10",
                               "prefLifetime=100 validLifetime=200 pfxLen=129 pfxAddr=2001:db8:1::"},
                              {"absent bytes are zeros", "00 1A 00 19 00 00 00 64 01",
                               "prefLifetime=100 validLifetime=16777216 pfxLen=0 pfxAddr=::"}};
    expectRead<Dhcp6Iana>(dhcp6IanaFactory, iana);
    expectRead<Dhcp6IaAddr>(dhcp6IaAddrFactory, address);
    expectRead<Dhcp6IaPfx>(dhcp6IaPfxFactory, prefix);
}

/// The text of a DUID whose other attributes are unset.
std::string duidRead(int offset, int type, int hardwareType, const std::string& mac, const std::string& en) {
    return "offset=" + std::to_string(offset) + " duidType=" + std::to_string(type) +
           " hardwareType=" + std::to_string(hardwareType) + " duidTime=0 llAddr=" + mac + " uuid= " + en;
}
const std::string noMac = "00:00:00:00:00:00", noEn = "entno=0 entId=";

TEST(Dhcp6Views, ReadDuids) {
    const auto at = [](U16 offset) {
        return [offset](const Dhcp6OptionPtr& opt) { return dhcp6DuidFactory(opt, offset); };
    };
    const ReadRow inClientId[] = {
        {"LLT", "00 01 00 0E 00 01 00 06 01 02 03 04 02 C1 00 00 0C 01",
         "offset=4 duidType=1 hardwareType=6 duidTime=16909060 llAddr=02:c1:00:00:0c:01 uuid= entno=0 entId="},
        {"EN", "00 02 00 0A 00 02 00 00 11 8B 'abcd' EE", duidRead(4, 2, 0, noMac, "entno=4491 entId=abcd")},
        {"UUID", "00 01 00 12 00 04 '0123456789abcdef' EE",
         "offset=4 duidType=4 hardwareType=0 duidTime=0 llAddr=00:00:00:00:00:00 uuid=0123456789abcdef entno=0 entId="},
        {"of an unknown type", "00 01 00 0A 00 05 00 01 02 C1 00 00 0C 01", duidRead(4, 5, 0, noMac, noEn)},
        // 2 - 6 wraps: the identifier extends to the packet's end.
        {"EN of length 2", "00 01 00 02 00 02 00 00 11 8B 'abcdef'",
         duidRead(4, 2, 0, noMac, "entno=4491 entId=abcdef")},
    };
    const ReadRow inRemoteId[] = {{"EN in a remote-id is 4 bytes too long",
                                   "00 25 00 0C EE*4 00 02 00 00 11 8B 'ab0123456789'",
                                   duidRead(8, 2, 0, noMac, "entno=4491 entId=ab0123")}};
    const ReadRow at254[] = {{"positions in the option wrap at 256", "00 03 01 02 03 04 05 06 A5*246 00 03",
                              duidRead(254, 3, 3, "01:02:03:04:05:06", noEn)}};
    const ReadRow at260[] = {
        {"an offset above 255 is its low byte", "00 01 00 02 00 05", duidRead(260, 5, 0, noMac, noEn)}};
    expectRead<Dhcp6Duid>(at(4), inClientId);
    expectRead<Dhcp6Duid>(at(8), inRemoteId);
    expectRead<Dhcp6Duid>(at(254), at254);
    expectRead<Dhcp6Duid>(at(260), at260);
}

/// A remote-id that starts with the enterprise number and a DUID-LL.
std::string remoteIdOf(const std::string& len, const std::string& rest) {
    return "00 25 " + len + " 00 00 7E D9 00 03 00 01 02 C1 00 00 0C 01 " + rest;
}
std::string remoteIdRead(const std::string& rest, const std::string& mac = "02:c1:00:00:0c:01") {
    return "entno=32473 duid=present " + rest + " {" + duidRead(8, 3, 1, mac, noEn) + "}";
}

TEST(Dhcp6Views, ReadRemoteIds) {
    const ReadRow layout[] = {{"no sub-option", remoteIdOf("00 16", "01*8 01 04 'Et1:'"),
                               remoteIdRead("interfaceId=72340172838076673 subOptType=0 subOptLen=0 subOptValue=")},
                              {"cut at the option's end", remoteIdOf("00 1E", "00*7 02 01 0A 'Et1:10' EE*4"),
                               remoteIdRead("interfaceId=2 subOptType=1 subOptLen=10 subOptValue=Et1:10")},
                              {"of its own length", remoteIdOf("00 1E", "00*8 07 02 'Et1:10'"),
                               remoteIdRead("interfaceId=0 subOptType=7 subOptLen=2 subOptValue=Et")},
                              {"cut at the packet's end", remoteIdOf("FF FF", "00*8 01 0A 'Et1'"),
                               remoteIdRead("interfaceId=0 subOptType=1 subOptLen=10 subOptValue=Et1")},
                              {"no room for its length", remoteIdOf("00 17", "00*8 01 0A 'Et1'"),
                               remoteIdRead("interfaceId=0 subOptType=0 subOptLen=0 subOptValue=")},
                              {"shorter than its layout", "00 25 00 04 00 00 7E D9 00 03 00 01",
                               remoteIdRead("interfaceId=0 subOptType=0 subOptLen=0 subOptValue=", noMac)}};
    // Lengths are computed in 8 bits: 270 becomes 14, and 13 - 14 becomes 255.
    const ReadRow name[] = {
        {"to the option's end", remoteIdOf("00 11", "'Et1' EE"), remoteIdRead("interfaceName=Et1")},
        {"of length 270", remoteIdOf("01 0E", "'Et1'"), remoteIdRead("interfaceName=")},
        {"of length 13", remoteIdOf("00 0D", "'x'*256"), remoteIdRead("interfaceName=" + std::string(255, 'x'))}};
    const ReadRow host[] = {{"of the given length", remoteIdOf("00 00", "'sw:Et1'"),
                             remoteIdRead("hostAndIntfNameLen=5 hostAndIntfName=sw:Et")}};
    expectRead<Dhcp6RemoteId>(dhcp6RemoteIdFactory, layout);
    expectRead<Dhcp6RemoteIdIntfName>(dhcp6RemoteIdIntfNameFactory, name);
    expectRead<Dhcp6RemoteIdHostAndIntfName>(
        [](const Dhcp6OptionPtr& opt) { return dhcp6RemoteIdHostAndIntfNameFactory(opt, 5); }, host);
}

TEST(Dhcp6Vss, IsReadAndWritten) {
    const ReadRow rows[] = {{"name", "00 44 00 05 00 'blue' EE", "vssType=0 vrfName=blue"},
                            {"of length 1", "00 44 00 01 07 'blue'", "vssType=7 vrfName="},
                            // A length of 0 leaves 255 bytes, or those up to the packet's end.
                            {"of length 0", "00 44 00 00 07 'blue'", "vssType=7 vrfName=blue"},
                            {"of length 257, which is 1 in 8 bits", "00 44 01 01 07 'blue'", "vssType=7 vrfName="},
                            {"longest", "00 44 00 65 07 'x'*100 EE", "vssType=7 vrfName=" + std::string(100, 'x')}};
    expectRead<Dhcp6VirtualSubnetSelection>(dhcp6VirtualSubnetSelectionFactory, rows);
    for (const char* option : {"00 44 00 66 00 'x'*101", "00 44 00 00 00 'x'*101"})
        EXPECT_EQ(refusalOf([&] { dhcp6VirtualSubnetSelectionFactory(dhcp6OptionFactory(packet(hex(option)), 0)); }),
                  "Tyk::String::bytes > maxLength() not allowed");
    const PktPtr pkt = packet(hex("00 44 00 05 A5*6"));
    const auto view = dhcp6VirtualSubnetSelectionFactory(dhcp6OptionFactory(pkt, 0));
    view->vrfNameIs("blue");
    EXPECT_EQ(internalErrorOf([&] { view->vrfNameIs("sixsix"); }), noRoom);
    EXPECT_EQ(view->vrfName(), "blue");
    EXPECT_EQ(bytesOf(*pkt), hex("00 44 00 05 A5 'blue' A5"));
}

TEST(Dhcp6Duid, JudgesAnIdentifierByTheLengthInThePacket) {
    const PktPtr pkt = packet(hex("00 01 00 0C 00 02 A5*18"));
    const auto view = dhcp6DuidFactory(dhcp6OptionFactory(pkt, 0), 4);
    pkt->data()[3] = 10;  // not the length that the option's view has cached
    EXPECT_EQ(internalErrorOf([&] { view->entIdIs("sixsix"); }),
              "entId's length is mismatch with the client-ID's optionLength");
    EXPECT_EQ(internalErrorOf([&] { view->entIdIs("four"); }), "");
    EXPECT_EQ(bytesOf(*pkt), hex("00 01 00 0A 00 02 A5*4 'four' A5*10"));
}

TEST(Dhcp6RemoteId, HoldsOneDuidView) {
    const auto opt = dhcp6OptionFactory(packet(hex("00 25 00 16 A5*40")), 0);
    const auto view = dhcp6RemoteIdIntfNameFactory(opt);
    const Dhcp6Duid::Ptr first = view->duid();
    EXPECT_EQ(view->duidIs(opt, 8), first);
    const Dhcp6Duid::Ptr deeper = view->duidIs(opt, 9);
    EXPECT_TRUE(deeper != first && view->duid() == deeper && deeper->offset() == 9);
    EXPECT_NE(view->duidIs(dhcp6OptionFactory(opt->pkt(), 0), 9), deeper);
    EXPECT_TRUE(view->duidDel() != nullptr && view->duid() == nullptr && view->duidDel() == nullptr);
}

TEST(Dhcp6RemoteId, TextsOfOddSizes) {
    const PktPtr pkt = packet(hex("00 25 00 13 A5*290"));
    const auto opt = dhcp6OptionFactory(pkt, 0);
    const auto named = dhcp6RemoteIdHostAndIntfNameFactory(opt, 5);
    named->hostAndIntfNameIs("sw:Et1");
    named->hostAndIntfNameIs("sw");
    EXPECT_EQ(named->hostAndIntfName(), "sw");
    const auto view = dhcp6RemoteIdFactory(opt);
    view->subOptValueIs(Kcore::String(std::string(260, 'v')));
    EXPECT_EQ(bytesOf(*pkt), hex("00 25 00 13 A5*14 'sw' 00*3 A5*3 01 04 'v'*260 A5*6"));
    EXPECT_EQ(view->subOptLen(), 4);
    EXPECT_EQ(view->subOptValue().size(), 260u);
}

}  // namespace
