#include "DhcpLib/OptionParser/LeaseQuery.h"

#include <gtest/gtest.h>

#include "DhcpLib/DhcpLib.h"
#include "OptionModel.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(LeaseQueryBuild, AsksByOneAddressOfTheTwo) {
    const auto giaddr = Kitnet::IpAddr::fromText("10.0.0.1"), ciaddr = Kitnet::IpAddr::fromText("192.0.2.9");
    const auto chaddr = Kitnet::EthAddr::fromText("00:11:22:33:44:55");
    const Octets options = hex("63 82 53 63 35 01 0A 37 03 33 5B 5C FF 00*51");
    const Octets byMac = hex("01 01 06 00 00 00 00 07 00*16 0A 00 00 01 00 11 22 33 44 55 00*202") + options;
    const Octets byIp = hex("01 00 00 00 84 03 02 01 00*4 C0 00 02 09 00*8 0A 00 00 01 00*208") + options;
    EXPECT_EQ(bytesOf(*buildDhcpLeaseQuery(true, giaddr, chaddr, ciaddr, 7)), byMac);
    EXPECT_EQ(bytesOf(*buildDhcpLeaseQuery(false, giaddr, chaddr, ciaddr, 0x84030201)), byIp);
    const auto wrapper = leaseQueryHelperWrapperFactory();
    EXPECT_EQ(bytesOf(*wrapper->buildDhcpLeaseQueryWrapper(true, giaddr, chaddr, ciaddr, 7)), byMac);
    EXPECT_EQ(wrapper->typeData().attributes()[0].name, "buildDhcpLeaseQueryWrapper");
}

struct Reply {
    const char *rule, *options;
    const char* read;  ///< times, flags behind what they belong to; "(untouched)" where the call fails
};
class LeaseQueryReply : public testing::TestWithParam<Reply> {};

TEST_P(LeaseQueryReply, IsReadLikeThis) {
    for (const U32 offset : {0u, 20u}) {
        for (const PktPtr& pkt : packets(Octets(offset, scratch) + message(GetParam().options))) {
            const Model::LeaseReply reply = Model::readLeaseQuery(pkt, offset);
            std::string text = "(untouched)";
            const auto add = [&](const auto&... values) { ((Kcore::appendText(text, values), text += ' '), ...); };
            if (!(reply == Model::LeaseReply())) {
                text.clear();
                add(reply.leaseTime, reply.leaseTimePresent, reply.lastTransactionTime,
                    reply.lastTransactionTimePresent, reply.serverId, reply.serverIdPresent, reply.ips, reply.ok);
            }
            EXPECT_EQ(text, GetParam().read);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Replies, LeaseQueryReply,
    testing::Values(Reply{"Whole",
                          "35 01 0D 33 04 00 01 51 80 5B 04 FF FF FF FF 36 04 0A 00 00 01 "
                          "5C 0C C0 00 02 02 C0 00 02 01 C0 00 02 02 FF",
                          "86400 true 4294967295 true 10.0.0.1 true [192.0.2.1, 192.0.2.2] true "},
                    Reply{"NoneOfThem", "35 01 0B FF", "0 false 0 false 9.9.9.9 false [] true "},
                    Reply{"WrongLengths", "33 02 00 01 5B 05 00 00 00 01 00 36 03 0A 00 00 5C 06 C0 00 02 01 C0 00 FF",
                          "0 true 0 true 9.9.9.9 true [] true "},
                    Reply{"EmptyOnes", "33 00 5B 00 36 00 5C 00 FF", "0 true 0 true 9.9.9.9 true [] true "},
                    Reply{"LastOfTwo", "33 04 00 00 00 01 33 04 00 00 00 02 5C 04 0A 00 00 01 5C 04 0A 00 00 02 FF",
                          "2 true 0 false 9.9.9.9 false [10.0.0.2] true "},
                    Reply{"LastOfTwoIsTooShort", "33 04 00 00 00 01 33 01 02 FF",
                          "0 true 0 false 9.9.9.9 false [] true "},
                    Reply{"BehindTheEnd", "FF 33 04 00 00 00 01", "0 false 0 false 9.9.9.9 false [] true "},
                    Reply{"NoEnd", "33 04 00 00 00 01 36 04 0A 00 00 01", "(untouched)"}),
    [](const auto& row) { return row.param.rule; });

TEST(LeaseQueryReply, AddsToTheSet) {
    Kcore::Duration time, last;
    std::set<Kitnet::IpAddr> ips;
    Kitnet::IpAddr server;
    bool a = true, b = true, c = true;
    for (const char* ip : {"5C 04 0A 00 00 02 FF", "5C 08 0A 00 00 01 0A 00 00 02 FF"})
        EXPECT_TRUE(parseLeaseQueryOpts(packet(message(ip)), time, last, ips, server, a, b, c, 0));
    EXPECT_EQ(Kcore::textOf(ips), "[10.0.0.1, 10.0.0.2]");
    EXPECT_FALSE(a || b || c);
}

}  // namespace
