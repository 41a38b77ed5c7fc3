#include "Bridging/Config.h"

#include <gtest/gtest.h>

#include <string>

#include "Refusal.h"

using namespace Bridging;
using Kitnet::IntfId;

namespace {

template <class Vlan>
void expectBound(unsigned last, const std::string& refusal) {
    for (const unsigned value : {0u, 1u, 4094u, 4095u, 4096u, 65537u}) {
        Vlan vlan(7);
        const bool fits = value <= last;
        EXPECT_EQ(refusalOf([&] { vlan.valueIs(value); }), fits ? "" : refusal) << value;
        EXPECT_EQ(vlan.value(), fits ? value : 7);
        EXPECT_EQ(Vlan::parse(std::to_string(value), &vlan), fits);
    }
}

TEST(BridgingVlanId, HasAnUpperBound) {
    expectBound<VlanId>(4095, "Bridging::VlanId::value > 4095 not allowed");
    expectBound<VlanIdOrNone>(4094, "Bridging::VlanIdOrNone::value > 4094 not allowed");
}

TEST(BridgingConfig, KeepsOneEntryForEachInterface) {
    const auto config = Kcore::makeNode<Config>();
    const IntfId one("Ethernet1"), two("Ethernet2");
    config->switchIntfConfigIs(one)->nativeVlanIs(VlanId(9));
    EXPECT_EQ(config->switchIntfConfigIs(two)->nativeVlan(), VlanId(1));
    EXPECT_EQ(config->switchIntfConfigIs(one), config->switchIntfConfig(one));
    EXPECT_EQ(config->switchIntfConfig().size(), 2u);
    const SwitchIntfConfig::Ptr removed = config->switchIntfConfigDel(one);
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->nativeVlan(), VlanId(9));
    EXPECT_FALSE(config->switchIntfConfig(one) || config->switchIntfConfigDel(one));
}

}  // namespace
