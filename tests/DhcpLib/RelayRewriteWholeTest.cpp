#include <map>

#include "RelayRewriteRows.h"

using namespace DhcpTest;
using namespace DhcpTest::Relay;

namespace {

using SubOptions = std::map<U8, Octets>;

/// The arguments of the first relay, with or without vendor data and a remote-id.
RelayRewrite firstRelay(unsigned selection, bool vendor) {
    RelayRewrite args{.circuitId = "Et1"};
    if (vendor) args.remoteId = "sw1", args.vendorSpecificSubOptIntfName = "Et1";
    if (selection >= 1) args.linkselectionId = Kitnet::IpAddr::fromText("10.1.5.1");
    if (selection == 2 || selection >= 4) args.serverId = Kitnet::IpAddr::fromText("10.1.11.1");
    if (selection >= 3) args.vpnId = "red";
    args.vssControlDisable = selection == 5;
    return args;
}

RelayRewrite secondRelay(unsigned i) {
    RelayRewrite args{.circuitId = "Ethernet2", .remoteId = "switch2"};
    const char* const names[] = {"", "blu", "purple"};
    args.vpnId = names[i % 3];
    args.vssControlDisable = i / 3 % 2 != 0;
    if (i / 6 % 2 != 0) args.linkselectionId = linkAddress;
    if (i / 12 % 2 != 0) args.serverId = serverAddress;
    if (i / 24 % 2 != 0) args.vendorSpecificSubOptSrcVtepIp = tunnelAddress;
    return args;
}

/// The sub-options of a message whose only option is 82. They end with it, and none is repeated.
SubOptions subOptionsOf(const Octets& bytes) {
    SubOptions found;
    EXPECT_EQ(bytes.at(240), 82);
    std::size_t at = 242;
    const std::size_t end = at + bytes.at(241);
    while (at < end) {
        const std::size_t next = at + 2 + bytes.at(at + 1);
        const U8* const data = &bytes.at(at + 2);
        EXPECT_TRUE(found.emplace(bytes[at], Octets(data, data + bytes[at + 1])).second) << unsigned{bytes[at]};
        at = next;
    }
    EXPECT_EQ(at, end);
    EXPECT_EQ(bytes.at(end), 255);
    return found;
}

Octets octets(std::string_view text) { return {text.begin(), text.end()}; }

/// The option 82 that is expected from the second relay, without the vendor data.
SubOptions expectedOf(SubOptions first, const RelayRewrite& args, Generation generation) {
    const bool rebuilds = generation == newGeneration, selects = !args.linkselectionId.isAny();
    SubOptions expected = first;
    if (rebuilds) {
        expected.emplace(1, octets(args.circuitId));
        expected.emplace(2, octets(args.remoteId));
    }
    if (rebuilds || selects || first.contains(5))
        for (const U8 code : hex("05 0B 97 98")) expected.erase(code);
    if (selects) expected[5] = hex("0A 00 05 01");
    if (!rebuilds && !selects) return expected;
    if (!args.serverId.isAny()) expected[11] = hex("0A 00 0B 01");
    const bool sameSize = first.contains(151) && first[151].size() == args.vpnId.size();
    if (!args.vpnId.empty()) expected[151] = !rebuilds && sameSize ? first[151] : octets(args.vpnId);
    if (!args.vpnId.empty() && !args.vssControlDisable) expected[152] = {};
    return expected;
}

void expectWhole(const Octets& relayedOnce, const RelayRewrite& args, Generation generation) {
    const SubOptions first = subOptionsOf(relayedOnce);
    const PktPtr pkt = packet(relayedOnce);
    const auto forecast = relayRewriteCheck(pkt, args, generation);
    if (generation == newGeneration && first.contains(152) && !args.vpnId.empty()) {
        EXPECT_EQ(forecast.verdict, Verdict::assertion);
        return;
    }
    EXPECT_EQ(forecast.verdict, Verdict::fine);
    EXPECT_TRUE(relayRewrite(pkt, args, generation));
    EXPECT_EQ(forecast.messageBytes, pkt->bytes());
    SubOptions second = subOptionsOf(bytesOf(*pkt)), expected = expectedOf(first, args, generation);
    const bool asked = args.vendorSpecificSubOptSrcVtepIp.isUsable();
    if (asked && !first.contains(9)) expected[9] = hex("00 00 7E D9 06 02 04 0A 00 09 01");
    EXPECT_EQ(second, expected);
}

TEST(RelayRewrite, GivesAWholeOption82BehindAnotherRelay) {
    for (const Generation firstGeneration : {oldGeneration, newGeneration})
        for (unsigned shape = 0; shape < 12; ++shape) {
            const PktPtr pkt = packet(message("FF"));
            ASSERT_TRUE(relayRewrite(pkt, firstRelay(shape / 2, shape % 2 != 0), firstGeneration));
            for (unsigned second = 0; second < 48 && !testing::Test::HasFailure(); ++second)
                for (const Generation generation : {oldGeneration, newGeneration}) {
                    SCOPED_TRACE(testing::Message() << "shape " << shape << ", second arguments " << second);
                    expectWhole(bytesOf(*pkt), secondRelay(second), generation);
                }
        }
}

}  // namespace
