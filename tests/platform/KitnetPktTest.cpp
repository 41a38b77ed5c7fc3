#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "Bytes.h"
#include "Emulation.h"
#include "Kitnet/IpHdr.h"
#include "Refusal.h"

using namespace Kitnet;

namespace {

using DhcpTest::bytesOf;
using Bytes = DhcpTest::Octets;
constexpr U32 maxBytes = std::numeric_limits<U32>::max();

/// Reads the guard bytes after a roomy packet. An address sanitizer would report them if they did not exist.
unsigned guardSum(const Pkt& pkt) {
    const U8* const end = pkt.data() + pkt.bytes();
    return std::accumulate(end, end + Pkt::guardBytes, 0u);
}

class KitnetPkt : public testing::TestWithParam<Pkt::Storage> {
protected:
    bool isTight() const { return GetParam() == Pkt::Storage::tight; }
    Pkt::Manager manager{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Storage, KitnetPkt, testing::Values(Pkt::Storage::roomy, Pkt::Storage::tight),
                         [](const auto& row) { return row.param == Pkt::Storage::tight ? "Tight" : "Roomy"; });

TEST_P(KitnetPkt, KeepsItsBytesWhenItsSizeChanges) {
    std::mt19937 random(1);
    const U32 livePackets = Pkt::memAllocationTracker_.live();
    auto pkt = manager.newPkt();
    pkt->vlanTagIs(0x8100, 0xe00a);
    Bytes model;
    for (int step = 0; step < 600; ++step) {
        const U32 n = static_cast<U32>(random() % (step % 10 == 0 ? 3000 : 150));
        const auto before = reinterpret_cast<std::uintptr_t>(pkt->data());
        switch (random() % 3) {
            case 0:
                pkt->newSharedHeadData(n);
                model.insert(model.begin(), n, 0);
                break;
            case 1:
                pkt->newSharedTailData(n);
                model.resize(model.size() + n);
                break;
            default:
                const U32 gone = std::min(2 * n, pkt->bytes());
                pkt->delSharedTailData(gone);
                model.resize(model.size() - gone);
        }
        ASSERT_EQ(pkt->frontBytes(), pkt->bytes());
        ASSERT_EQ(bytesOf(*pkt), model) << "step " << step;
        if (isTight())
            ASSERT_NE(reinterpret_cast<std::uintptr_t>(pkt->data()), before);
        else
            guardSum(*pkt);
        for (std::size_t i = 0; i < model.size(); ++i) pkt->data()[i] = model[i] = static_cast<U8>(random() | 1);
    }
    EXPECT_TRUE(pkt->vlanTagPresent() && pkt->vlanTagTpid() == 0x8100 && pkt->vlanTagTci() == 0xe00a);
    pkt->vlanTagDel();
    EXPECT_FALSE(pkt->vlanTagPresent() || pkt->vlanTagTpid() != 0 || pkt->vlanTagTci() != 0);
    pkt = nullptr;
    EXPECT_EQ(Pkt::memAllocationTracker_.live(), livePackets);
}

TEST_P(KitnetPkt, RefusesImpossibleSizesAndStaysUnchanged) {
    const Bytes bytes{1, 2, 3};
    const auto pkt = manager.newPkt(bytes);
    const U8* const data = pkt->data();
    EXPECT_EQ(refusalOf([&] { pkt->newSharedHeadData(maxBytes - 2); }), "Kitnet::Pkt::bytes > 4294967295 not allowed");
    EXPECT_EQ(refusalOf([&] { pkt->newSharedTailData(maxBytes); }), "Kitnet::Pkt::bytes > 4294967295 not allowed");
    EXPECT_EQ(refusalOf([&] { pkt->delSharedTailData(4); }), "Kitnet::Pkt::delSharedTailData > bytes() not allowed");
    EXPECT_EQ(pkt->data(), data);
    EXPECT_EQ(bytesOf(*pkt), bytes);
}

TEST(KitnetPktRoomy, MovesItsBytesOnlyIfTheSpareRoomIsTooSmall) {
    Pkt::Manager manager(Pkt::Storage::roomy);
    const auto pkt = manager.newPkt(Bytes(300, 0xa5));
    const U8* const start = pkt->data();
    for (U32 i = 1; i <= Pkt::headRoom; ++i) {
        pkt->newSharedHeadData(1);
        pkt->newSharedTailData(Pkt::tailRoom / Pkt::headRoom);
        ASSERT_EQ(pkt->data() + i, start);
        ASSERT_EQ(guardSum(*pkt), 0u);
    }
    int moves = 0;
    for (int i = 0; i < 50'000; ++i) {
        const U8* const head = pkt->data();
        pkt->newSharedHeadData(1);
        const U8* const tail = pkt->data();
        pkt->newSharedTailData(1);
        moves += (tail != head - 1) + (pkt->data() != tail);
    }
    EXPECT_LE(moves, 20);
}

/// In a process of its own, since the environment is read once.
TEST(KitnetPktManagerDeathTest, TakesItsStorageFromTheEnvironment) {
    if (DhcpTest::emulated) GTEST_SKIP() << "the program starts itself";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setenv("DHCPLIB_PKT_STORAGE", "tight", 1);
            std::exit(globalPktManager().storage() == Pkt::Storage::tight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(KitnetIpHdr, LengthIsFourTimesTheLowNibble) {
    Pkt::Manager manager(Pkt::Storage::tight);
    const auto pkt = manager.newPkt(Bytes{0x45, 0x4f, 0x40, 0xf6});
    const U32 expected[] = {20, 60, 0, 24, 0};
    for (U32 i = 0; i < 5; ++i) EXPECT_EQ(IpHdr(*pkt, i).headerBytes(), expected[i]);
    EXPECT_EQ(IpHdr(*pkt, maxBytes).headerBytes(), 0u);
    EXPECT_EQ(IpHdr::headerBytes(0x46), 24u);
}

}  // namespace
