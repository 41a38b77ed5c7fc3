#include "AreaRows.h"
#include "DhcpLib/DhcpHdr.h"
#include "FailingAllocations.h"
#include "Kcore/FlatMap.h"
#include "RelayRewriteRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(AllocationFailure, LeavesAMapAsItWas) {
    Kcore::FlatMap<int, int> map, before;
    int failures = 0;
    for (int key = 0; key < 100; ++key) {
        failures += failEachAllocation([&] { map.insert(key, key); }, [&] { EXPECT_TRUE(map == before); });
        before = map;
    }
    EXPECT_GE(failures, 5);
    Kcore::FlatMap<int, int> other;
    other.insert(1000, 0);
    EXPECT_EQ(failEachAllocation([&] { other = map; }, [&] { EXPECT_TRUE(other.size() == 1 && other.contains(1000)); }),
              2);
    EXPECT_TRUE(other == map && other.contains(99));
    EXPECT_EQ(failEachAllocation(
                  [&] {
                      for (int key = 0; key < 100; ++key) map.erase(key);
                  },
                  [] {}),
              0);
}

TEST(AllocationFailure, LeavesACollectionAsItWas) {
    const PktPtr pkt = packet(hex("0C 01 61"));
    const auto options = dhcpMsgOptionsFactory(pkt, 0);
    const auto view = options->option(DhcpOptionType::hostName);
    int failures = 0;
    for (U32 code = 100; code < 150; ++code) {
        const auto type = static_cast<DhcpOptionType>(code);
        const std::size_t size = options->option().size();
        failures += failEachAllocation([&] { options->optionIs(type, view); },
                                       [&] {
                                           EXPECT_EQ(options->option().size(), size);
                                           EXPECT_FALSE(options->option(type));
                                           EXPECT_EQ(options->option(DhcpOptionType::hostName), view);
                                       });
        EXPECT_EQ(options->option(type), view);
    }
    EXPECT_GE(failures, 5);
}

TEST(AllocationFailure, LeavesAPacketAsItWasBeforeABlockIsWritten) {
    const Octets bytes = hex("A5*5 01 01 61 02 01 62");
    const PktPtr pkt = packet(bytes);
    const auto live = QuorvaSpecificSubOptionSubOpt::memAllocationTracker_.live();
    EXPECT_GE(failEachAllocation([&] { dhcpVendorSpecificDataFactory(pkt, 0, 9, 6); },
                                 [&] { EXPECT_EQ(bytesOf(*pkt), bytes); }),
              2);
    EXPECT_EQ(bytesOf(*pkt), hex("00 00 00 09 06 01 01 61 02 01 62"));
    EXPECT_EQ(QuorvaSpecificSubOptionSubOpt::memAllocationTracker_.live(), live);
}

TEST(AllocationFailure, LeavesAPacketAsItWasBeforeARewrite) {
    using namespace Relay;
    const RelayRewrite add{.circuitId = "ab", .linkselectionId = linkAddress, .vendorSpecificSubOptIntfName = "Et1"};
    const RelayRewrite remove{.op = reply, .vendorSpecificSubOptIntfName = "Et1"};
    const Octets ends[] = {hex("FF"), hex("FF EE*400"), hex("2B FE 11*254 2B FE 22*254 2B FE 33*254 2B FE 44*254 FF")};
    int failures = 0;
    for (const char* const info : {"", "52 0D 09 07 00 00 00 09 02 'AB' 01 02 'xy'"})
        for (const Octets& end : ends)
            for (const auto storage : {Kitnet::Pkt::Storage::tight, Kitnet::Pkt::Storage::roomy})
                for (const RelayRewrite& args : {add, remove})
                    for (const Generation generation : {oldGeneration, newGeneration}) {
                        const Octets before = message(hex(info) + end);
                        const PktPtr pkt = packet(before, storage), unhindered = packet(before, storage);
                        EXPECT_TRUE(relayRewrite(unhindered, args, generation));
                        failures += failEachAllocation([&] { relayRewrite(pkt, args, generation); },
                                                       [&] { expectBytes(*pkt, before); });
                        expectBytes(*pkt, bytesOf(*unhindered));
                    }
    EXPECT_GE(failures, 10);
}

}  // namespace
