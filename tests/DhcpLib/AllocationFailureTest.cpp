#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "AreaRows.h"
#include "DhcpLib/DhcpHdr.h"

namespace {

constexpr int never = -1;
int allocationsUntilFailure = never;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (allocationsUntilFailure != never && allocationsUntilFailure-- == 0) {
        allocationsUntilFailure = never;
        throw std::bad_alloc();
    }
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Calls `act` with the first, second, ... allocation failing, and `unchanged` after each failure, until `act`
/// succeeds. The number of failures.
int failEachAllocation(const std::function<void()>& act, const std::function<void()>& unchanged) {
    for (int failures = 0;; ++failures) {
        allocationsUntilFailure = failures;
        try {
            act();
            allocationsUntilFailure = never;
            return failures;
        } catch (const std::bad_alloc&) {
            unchanged();
        }
    }
}

TEST(AllocationFailure, LeavesAMapAsItWas) {
    Kcore::FlatMap<int, int> map, before;
    int failures = 0;
    for (int key = 0; key < 100; ++key) {
        failures += failEachAllocation([&] { map.insert(key, key); }, [&] { EXPECT_TRUE(map == before); });
        before = map;
    }
    EXPECT_GE(failures, 5);
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

TEST(AllocationFailure, OfAnEnterpriseBlockLeavesThePacketAsItWas) {
    const Octets bytes = hex("A5*5 01 01 61 02 01 62");
    const PktPtr pkt = packet(bytes);
    const auto live = QuorvaSpecificSubOptionSubOpt::memAllocationTracker_.live();
    EXPECT_GE(failEachAllocation([&] { dhcpVendorSpecificDataFactory(pkt, 0, 9, 6); },
                                 [&] { EXPECT_EQ(bytesOf(*pkt), bytes); }),
              2);
    EXPECT_EQ(bytesOf(*pkt), hex("00 00 00 09 06 01 01 61 02 01 62"));
    EXPECT_EQ(QuorvaSpecificSubOptionSubOpt::memAllocationTracker_.live(), live);
}

}  // namespace
