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

TEST(Dhcp6Headers, SettersChangeTheirBytesOrNothing) {
    const auto linkAddress = Kitnet::Ip6Addr::fromText("2001:db8::1"),
               peerAddress = Kitnet::Ip6Addr::fromText("fe80::2");
    struct Row {
        std::function<void(Dhcp6RegHdr&, Dhcp6RelayHdr&)> set;
        std::string after;  // expected bytes, from 36 bytes A5
    };
    const Row rows[] = {{[](auto&, auto& v) { v.msgTypeIs(Dhcp6MsgType::relayReply); }, "A5 0D A5*34"},
                        {[](auto& v, auto&) { v.xidIs(Dhcp6Xid(0x12, 0x34, 0x56)); }, "A5*2 12 34 56 A5*31"},
                        {[](auto&, auto& v) { v.hopCountIs(7); }, "A5*2 07 A5*33"},
                        {[](auto&, auto& v) { EXPECT_EQ(v.hopCountInc(0x5b), 0); }, "A5*2 00 A5*33"},
                        {[&](auto&, auto& v) { v.linkAddrIs(linkAddress); }, "A5*3 20 01 0D B8 00*11 01 A5*17"},
                        {[&](auto&, auto& v) { v.peerAddrIs(peerAddress); }, "A5*19 FE 80 00*13 02 A5"}};
    const Octets before(36, scratch);
    for (const Row& row : rows) {
        const Octets after = hex(row.after);
        std::size_t needed = before.size();
        while (before[needed - 1] == after[needed - 1]) --needed;
        for (const std::size_t size : {before.size(), needed, needed - 1}) {
            const PktPtr pkt = packet(before);
            const auto reg = dhcp6RegHdrFactory(pkt, 1);
            const auto relay = dhcp6RelayHdrFactory(pkt, 1);
            pkt->delSharedTailData(static_cast<U32>(before.size() - size));
            const std::string cached = attributesOf(*reg) + attributesOf(*relay);
            EXPECT_EQ(internalErrorOf([&] { row.set(*reg, *relay); }), size < needed ? noRoom : "");
            EXPECT_EQ(bytesOf(*pkt), first(size < needed ? before : after, size));
            EXPECT_EQ(attributesOf(*reg) + attributesOf(*relay) == cached, size < needed);
        }
    }
    const PktPtr wraps = packet(Octets(65540, 0));
    Dhcp6RegHdr(wraps, 65535).xidIs({1, 2, 3});
    EXPECT_EQ(first(bytesOf(*wraps), 4), hex("01 02 03 00"));
}

TEST(Dhcp6Xid, HasATextForm) {
    EXPECT_EQ(Kcore::textOf(Dhcp6Xid::fromText("0x000abc")), "0x000abc");
    for (const char* text : {"", "000abc", "0x000ab", "0x000abcd", "0x000abg", "0x-00abc"})
        EXPECT_NE(refusalOf([&] { Dhcp6Xid::fromText(text); }), "") << text;
}

}  // namespace
