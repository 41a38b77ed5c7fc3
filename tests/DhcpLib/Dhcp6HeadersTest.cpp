#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const std::string relayBytes = "0C 07 20 01 0D B8 00*11 01 FE 80 00*13 02";

TEST(Dhcp6Headers, ReadEachFieldOnce) {
    // Bytes that are cut off read as 0.
    for (const PktPtr& pkt : packets(hex("EE 03 12"))) EXPECT_EQ(Dhcp6RegHdr(pkt, 1).xid(), Dhcp6Xid(0x12, 0, 0));
    for (const PktPtr& pkt : packets(hex("EE"))) EXPECT_EQ(Dhcp6HdrBase(pkt, 1).msg(), 0);
    const PktPtr pkt = packet(hex("EE" + relayBytes));
    Dhcp6RelayHdr relay(pkt, 1);
    const std::string read = attributesOf(relay);
    EXPECT_EQ(read.substr(read.find("msg=")),
              "msg=12 msgType=relayForward initializedBase=true hopCount=7 linkAddr=2001:db8::1 peerAddr=fe80::2");
    std::fill_n(pkt->data(), pkt->bytes(), U8{0});
    relay.handleInitializedBase();
    relay.handleInitialized();
    EXPECT_EQ(attributesOf(relay), read);
}

// The fuzz target Fuzz6Sequence checks the bytes that setters change.
TEST(Dhcp6Headers, SettersThatDoNotFitKeepTheCachedValue) {
    const PktPtr pkt = packet(Octets(36, scratch));
    const auto reg = dhcp6RegHdrFactory(pkt, 1);
    const auto relay = dhcp6RelayHdrFactory(pkt, 1);
    const std::string cached = attributesOf(*reg) + attributesOf(*relay);
    pkt->delSharedTailData(35);
    const std::function<void()> setters[] = {[&] { relay->msgTypeIs(Dhcp6MsgType::relayReply); },
                                             [&] {
                                                 reg->xidIs({1, 2, 3});
                                             },
                                             [&] { relay->hopCountIs(7); },
                                             [&] { relay->hopCountInc(1); },
                                             [&] { relay->linkAddrIs({}); },
                                             [&] { relay->peerAddrIs({}); }};
    for (const auto& set : setters) EXPECT_EQ(internalErrorOf(set), noRoom);
    EXPECT_EQ(attributesOf(*reg) + attributesOf(*relay), cached);
    const PktPtr wraps = packet(Octets(65540, 0));
    Dhcp6RegHdr(wraps, 65535).xidIs({1, 2, 3});
    EXPECT_EQ(first(bytesOf(*wraps), 4), hex("01 02 03 00"));
}

TEST(Dhcp6Headers, HopCountWraps) {
    const PktPtr pkt = packet(hex("0C FF"));
    EXPECT_EQ(dhcp6RelayHdrFactory(pkt, 0)->hopCountInc(2), 1);
    EXPECT_EQ(bytesOf(*pkt), hex("0C 01"));
}

TEST(Dhcp6Xid, HasATextForm) {
    EXPECT_EQ(Kcore::textOf(Dhcp6Xid::fromText("0x000abc")), "0x000abc");
    for (const char* text : {"", "000abc", "0x000ab", "0x000abcd", "0x000abg", "0x-00abc"})
        EXPECT_NE(refusalOf([&] { Dhcp6Xid::fromText(text); }), "") << text;
}

}  // namespace
