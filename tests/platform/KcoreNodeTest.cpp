#include <gtest/gtest.h>

#include <map>
#include <random>
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

TEST(KcoreFlatMap, AgreesWithAModel) {
    std::mt19937 random(5);
    for (const int keys : {6, 40, 700}) {
        FlatMap<Key, int> map;
        FlatSet<Key> set;
        std::vector<std::pair<int, int>> model;
        for (int step = 0; step < 12 * keys; ++step) {
            const Key key{static_cast<int>(random() % static_cast<unsigned>(keys))};
            const auto place = std::ranges::find(model, key.value, &std::pair<int, int>::first);
            const bool there = place != model.end();
            ASSERT_EQ(map.find(key) != nullptr ? *map.find(key) : -1, there ? place->second : -1);
            switch (random() % 4) {
                case 0:
                    ASSERT_EQ(map.erase(key), there ? std::optional(place->second) : std::nullopt);
                    ASSERT_EQ(set.erase(key), there);
                    if (!there) continue;
                    *place = model.back();
                    model.pop_back();
                    continue;
                case 1:
                    map.insertOrAssign(key, step);
                    if (there) place->second = step;
                    break;
                default:
                    ASSERT_EQ(map.insert(key, step), !there);
            }
            ASSERT_EQ(set.insert(key), !there);
            if (!there) model.emplace_back(key.value, step);
        }
        FlatMap<Key, int> backwards;
        FlatSet<Key> reversed;
        for (std::size_t i = model.size(); i-- > 0;) {
            EXPECT_TRUE(map.begin()[static_cast<std::ptrdiff_t>(i)].first.value == model[i].first);
            backwards.insert({model[i].first}, model[i].second);
            reversed.insert({model[i].first});
        }
        EXPECT_TRUE(map == backwards && set == reversed && set.hash() == reversed.hash());
        reversed.erase({model[0].first});
        backwards.insertOrAssign({model[0].first}, -2);
        EXPECT_FALSE(map == backwards || set == reversed);
        map.clear();
        EXPECT_TRUE(map.empty() && !map.contains({model[0].first}) && map.insert({1}, 1));
    }
}

}  // namespace
