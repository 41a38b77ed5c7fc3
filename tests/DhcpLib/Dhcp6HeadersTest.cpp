#include <sstream>

#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const auto linkAddress = Kitnet::Ip6Addr::fromText("2001:db8::1");
const auto peerAddress = Kitnet::Ip6Addr::fromText("fe80::2");
const std::string relayBytes = "0C 07 20 01 0D B8 00*11 01 FE 80 00*13 02";

TEST(Dhcp6Headers, ReadEachFieldFromItsPlace) {
    const Octets reg = hex("EE 03 12 34 56"), relay = hex("EE " + relayBytes);
    const auto skipPlace = [](const std::string& attributes) { return attributes.substr(attributes.find("msg=")); };
    for (const PktPtr& pkt : packets(reg))
        EXPECT_EQ(skipPlace(attributesOf(*dhcp6RegHdrFactory(pkt, 1))),
                  "msg=3 msgType=request initializedBase=true xid=0x123456");
    for (const PktPtr& pkt : packets(relay))
        EXPECT_EQ(skipPlace(attributesOf(*dhcp6RelayHdrFactory(pkt, 1))),
                  "msg=12 msgType=relayForward initializedBase=true hopCount=7 linkAddr=2001:db8::1 peerAddr=fe80::2");
    // What a cut takes away reads as 0.
    for (const PktPtr& pkt : packets(hex("EE 03 12"))) EXPECT_EQ(Dhcp6RegHdr(pkt, 1).xid(), Dhcp6Xid(0x12, 0, 0));
    for (const PktPtr& pkt : packets(hex("EE 0C 07 20 01")))
        EXPECT_EQ(Dhcp6RelayHdr(pkt, 1).linkAddr(), Kitnet::Ip6Addr::fromText("2001::"));
    for (const PktPtr& pkt : packets(hex("EE"))) EXPECT_EQ(Dhcp6HdrBase(pkt, 1).msg(), 0);
    EXPECT_EQ(Dhcp6HdrBase::memAllocationTracker_.live(), 0u);
}

TEST(Dhcp6Headers, SettersChangeTheirBytesOrNothing) {
    struct Row {
        std::function<void(Dhcp6RegHdr&, Dhcp6RelayHdr&)> set;
        std::string after;  // of A5 and 34 bytes A5
    };
    const std::vector<Row> rows{{[](auto&, auto& v) { v.msgTypeIs(Dhcp6MsgType::relayReply); }, "A5 0D A5*34"},
                                {[](auto& v, auto&) {
                                     v.xidIs({0x12, 0x34, 0x56});
                                 },
                                 "A5*2 12 34 56 A5*31"},
                                {[](auto&, auto& v) { v.hopCountIs(7); }, "A5*2 07 A5*33"},
                                {[](auto&, auto& v) { EXPECT_EQ(v.hopCountInc(0x5b), 0); }, "A5*2 00 A5*33"},
                                {[](auto&, auto& v) { v.linkAddrIs(linkAddress); }, "A5*3 20 01 0D B8 00*11 01 A5*17"},
                                {[](auto&, auto& v) { v.peerAddrIs(peerAddress); }, "A5*19 FE 80 00*13 02 A5"}};
    const Octets before(36, scratch);
    for (const Row& row : rows) {
        const Octets after = hex(row.after);
        std::size_t needed = before.size();
        while (before[needed - 1] == after[needed - 1]) --needed;
        for (std::size_t size = 1; size <= before.size(); ++size) {
            // The bytes go once the views are made, which therefore hold what was there.
            const PktPtr pkt = packet(before);
            const auto reg = Dhcp6RegHdr::Dhcp6RegHdrIs(pkt, 1);
            const auto relay = Dhcp6RelayHdr::Dhcp6RelayHdrIs(pkt, 1);
            pkt->delSharedTailData(static_cast<U32>(before.size() - size));
            const std::string cached = attributesOf(*reg) + attributesOf(*relay);
            const std::string error = internalErrorOf([&] { row.set(*reg, *relay); });
            EXPECT_EQ(error, size < needed ? noRoom : "");
            const Octets& whole = error.empty() ? after : before;
            EXPECT_EQ(bytesOf(*pkt), Octets(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
            EXPECT_EQ(attributesOf(*reg) + attributesOf(*relay) == cached, !error.empty());
        }
    }
}

TEST(Dhcp6Headers, CacheTheirFieldsOnce) {
    const PktPtr pkt = packet(hex(relayBytes + " " + relayBytes));
    Dhcp6RelayHdr outer(pkt, 0), inner(pkt, 34);
    inner.hopCountIs(9);
    outer.msgTypeIs(Dhcp6MsgType::relayReply);
    EXPECT_EQ(bytesOf(*pkt), hex("0D" + relayBytes.substr(2) + " 0C 09" + relayBytes.substr(5)));
    EXPECT_EQ(outer.hopCount(), 7);
    EXPECT_EQ(inner.msgType(), Dhcp6MsgType::relayForward);
    const std::string cached = attributesOf(outer);
    std::fill_n(pkt->data(), pkt->bytes(), U8{0});
    outer.handleInitializedBase();
    outer.handleInitialized();
    EXPECT_EQ(attributesOf(outer), cached);
}

TEST(Dhcp6Headers, PositionsWrapAt65536) {
    const PktPtr pkt = packet(Octets(65540, 0));
    Dhcp6RegHdr(pkt, 65535).xidIs({1, 2, 3});
    EXPECT_EQ(Octets(pkt->data(), pkt->data() + 4), hex("01 02 03 00"));
}

TEST(Dhcp6Xid, HasATextForm) {
    std::ostringstream out;
    out << Dhcp6Xid(0, 0x0a, 0xbc);
    EXPECT_EQ(out.str(), "0x000abc");
    EXPECT_EQ(Dhcp6Xid::fromText("0x000abc"), Dhcp6Xid(0, 0x0a, 0xbc));
    for (const char* text : {"", "0x", "000abc", "0x000ab", "0x000abcd", "0x000abg", "0x-00abc"})
        EXPECT_NE(refusalOf([&] { Dhcp6Xid::fromText(text); }), "") << text;
}

}  // namespace
