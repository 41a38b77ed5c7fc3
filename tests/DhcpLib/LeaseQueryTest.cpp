#include "DhcpLib/OptionParser/LeaseQuery.h"

#include <gtest/gtest.h>

#include <set>

#include "Bytes.h"
#include "DhcpLib/DhcpLib.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(LeaseQueryBuild, AsksByMacOrByIpAddress) {
    const auto giaddr = Kitnet::IpAddr::fromText("10.0.0.1"), ciaddr = Kitnet::IpAddr::fromText("192.0.2.9");
    const auto chaddr = Kitnet::EthAddr::fromText("00:11:22:33:44:55");
    const Octets options = hex("63 82 53 63 35 01 0A 37 03 33 5B 5C FF 00*51");
    const Octets byMac = hex("01 01 06 00 00 00 00 07 00*16 0A 00 00 01 00 11 22 33 44 55 00*202") + options;
    const Octets byIp = hex("01 00 00 00 84 03 02 01 00*4 C0 00 02 09 00*8 0A 00 00 01 00*208") + options;
    EXPECT_EQ(bytesOf(*buildDhcpLeaseQuery(true, giaddr, chaddr, ciaddr, 7)), byMac);
    EXPECT_EQ(bytesOf(*buildDhcpLeaseQuery(false, giaddr, chaddr, ciaddr, 0x84030201)), byIp);
    const auto wrapper = leaseQueryHelperWrapperFactory();
    EXPECT_EQ(bytesOf(*wrapper->buildDhcpLeaseQueryWrapper(true, giaddr, chaddr, ciaddr, 7)), byMac);
}

TEST(LeaseQueryReply, AddsToTheSet) {
    Kcore::Duration time, last;
    std::set<Kitnet::IpAddr> ips;
    Kitnet::IpAddr server;
    bool a = true, b = true, c = true;
    for (const char* ip : {"5C 04 0A 00 00 02 FF", "5C 08 0A 00 00 01 0A 00 00 02 FF"})
        EXPECT_TRUE(parseLeaseQueryOpts(packet(message(ip)), time, last, ips, server, a, b, c, 0));
    EXPECT_EQ(Kcore::textOf(ips), "[10.0.0.1, 10.0.0.2]");
    EXPECT_FALSE(a || b || c);
    // Options of a wrong length are present, but have no value.
    EXPECT_TRUE(parseLeaseQueryOpts(packet(message("33 02 00 3C 5C 06 0A 00 00 03 0A 00 36 03 0A 00 00 FF")), time,
                                    last, ips, server, a, b, c, 0));
    EXPECT_TRUE(a && !b && c && time.count() == 0 && server.isAny() && ips.size() == 2);
}

}  // namespace
