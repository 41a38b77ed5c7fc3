#include "DhcpLib/Dhcp6MessageBuilder.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "platform/Refusal.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const auto link6 = Kitnet::Ip6Addr::fromText("2001:db8::1"), peer6 = Kitnet::Ip6Addr::fromText("fe80::1");

TEST(Dhcp6MessageBuilder, WritesHeadersAndOptions) {
    Dhcp6MessageBuilder inner(Dhcp6MsgType::reply, Dhcp6Xid(1, 2, 3));
    const auto ia = inner.add(Dhcp6OptionType::iana, 12);
    const auto address = inner.addNested(ia, Dhcp6OptionType::iaAddress, 3);
    EXPECT_TRUE(inner.addNested(address, Dhcp6OptionType::statusCode, 1));
    EXPECT_TRUE(address->len() == 8 && ia->len() == 24);
    EXPECT_TRUE(inner.addNested(ia, Dhcp6OptionType::preference, 0));
    EXPECT_FALSE(inner.addNested(address, Dhcp6OptionType::auth, 0) || inner.addNested({}, Dhcp6OptionType::auth, 0));
    EXPECT_TRUE(inner.add(Dhcp6OptionType::rapidCommit, 0));
    EXPECT_FALSE(inner.addNested(ia, Dhcp6OptionType::iaAddress, 3));  // no longer the last one
    const Octets message = bytesOf(*inner.pkt());
    EXPECT_EQ(message, hex("07 01 02 03 00 03 00 1C 00*12 00 05 00 08 00*3 00 0D 00 01 00 00 07 00 00 00 0E 00 00"));

    Dhcp6MessageBuilder outer(Dhcp6MsgType::relayForward, 5, link6, peer6);
    EXPECT_TRUE(outer.addMessage(message));
    EXPECT_EQ(bytesOf(*outer.pkt()), hex("0C 05 20 01 0D B8 00*11 01 FE 80 00*13 01 00 09 00 28") + message);
    EXPECT_EQ(dhcp6RelayChain(outer.pkt(), {0, outer.bytes()}).size(), 2u);
}

TEST(Dhcp6MessageBuilder, RefusesWhatPassesItsBound) {
    for (const U32 most : {U32{100}, Dhcp6MessageBuilder::largestMessage}) {
        Dhcp6MessageBuilder message(Dhcp6MsgType::relayReply, 0, link6, peer6, most);
        const Octets data(most);
        const auto ia = message.add(Dhcp6OptionType::iana, 12);
        EXPECT_EQ(message.bytesLeft(), most - 50);
        for (const std::size_t len : {std::size_t{most} - 53, std::size_t{most}, SIZE_MAX})
            EXPECT_TRUE(!message.add(Dhcp6OptionType::auth, len) && !message.addNested(ia, Dhcp6OptionType::auth, len));
        EXPECT_FALSE(message.addMessage(data));
        EXPECT_TRUE(message.bytes() == 50 && ia->len() == 12);
        EXPECT_EQ(message.addMessage({data.data(), most - 54})->len(), most - 54);
        EXPECT_TRUE(message.bytesLeft() == 0 && !message.add(Dhcp6OptionType::auth, 0));
    }
    EXPECT_NE(refusalOf([] { Dhcp6MessageBuilder(Dhcp6MsgType::relayReply, Dhcp6Xid()); }), "");
    EXPECT_NE(refusalOf([] { Dhcp6MessageBuilder(Dhcp6MsgType::solicit, 0, link6, peer6); }), "");
    EXPECT_NE(refusalOf([] { Dhcp6MessageBuilder(Dhcp6MsgType::solicit, Dhcp6Xid(), 3); }), "");
    EXPECT_NE(refusalOf([] { Dhcp6MessageBuilder(Dhcp6MsgType::solicit, Dhcp6Xid(), 65536); }), "");
}

}  // namespace
