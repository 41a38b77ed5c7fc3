#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Kcore/Kcore.h"
#include "KitSlab/Slab.h"

using namespace Kcore;

namespace {

struct Leaf : Node, KitSlab::SlabObject {
    static inline KitSlab::AllocationTracker memAllocationTracker_;
    explicit Leaf(int n = 0) : number(n) {}
    const TypeData& typeData() const override { return typeDataOf<Leaf>(); }
    static constexpr auto declaration() { return declare("Leaf", attribute("number", &Leaf::number)); }
    int number;
    [[no_unique_address]] KitSlab::Tracked<Leaf> tracked;
};

// Whether a raw pointer is adopted or shared has to be said.
static_assert(!std::is_constructible_v<Ptr<Leaf>, Leaf*> && std::is_constructible_v<Ptr<Leaf>, std::nullptr_t>);

U32 live() { return Leaf::memAllocationTracker_.live(); }

TEST(KcorePtr, TheLastPointerDestroysTheNode) {
    Ptr<Leaf> first = makeNode<Leaf>(7);
    {
        const Ptr<const Node> asBase = first;
        Ptr<Leaf> moved = std::move(first);
        // NOLINTNEXTLINE(bugprone-use-after-move): a pointer that was moved from is null
        EXPECT_TRUE(first == nullptr && asBase == moved && moved->useCount() == 2);
        first = moved;
        const Ptr<Leaf>& same = moved;
        moved = same;
        EXPECT_EQ(moved->useCount(), 3u);
        EXPECT_EQ(Ptr<Leaf>::share(moved.get())->useCount(), 4u);
        EXPECT_EQ(Ptr<Leaf>::adopt(moved.release())->number, 7);
    }
    EXPECT_EQ(first->useCount(), 1u);
    first = makeNode<Leaf>();
    EXPECT_EQ(live(), 1u);
    first = nullptr;
    EXPECT_EQ(live(), 0u);
}

/// Keys that collide in pairs, as an attacker would choose them.
struct Key {
    int value;
    std::size_t hash() const { return static_cast<std::size_t>(value / 2) * 64; }
    friend bool operator==(const Key&, const Key&) = default;
};

// The fuzz target FuzzContainers compares contents with a model, which has another order.
TEST(KcoreFlatMap, RemovedEntryIsReplacedByTheLast) {
    FlatMap<Key, int> map;
    std::vector<int> order;
    for (int key = 0; key < 700; ++key) {
        map.insert({key}, -key);
        order.push_back(key);
    }
    for (const std::size_t at : {0u, 5u, 300u, 696u}) {
        EXPECT_EQ(map.erase({order[at]}), -order[at]);
        order[at] = order.back();
        order.pop_back();
        ASSERT_TRUE(std::equal(map.begin(), map.end(), order.begin(), order.end(),
                               [](const auto& entry, int key) { return entry.first.value == key; }));
        for (const int key : order) ASSERT_EQ(*map.find({key}), -key);
    }
}

}  // namespace
