#include <gtest/gtest.h>

#include <string>

#include "Bridging/Config.h"
#include "Refusal.h"

using namespace Bridging;
using Kitnet::IntfId;

namespace {

template <class Vlan>
void expectBound(unsigned last, const std::string& refusal) {
    for (const unsigned value : {0u, 1u, 4094u, 4095u, 4096u, 65536u, 65537u, 0xffffffffu}) {
        Vlan vlan(7);
        const bool fits = value <= last;
        EXPECT_EQ(refusalOf([&] { vlan.valueIs(value); }), fits ? "" : refusal) << value;
        EXPECT_EQ(vlan.value(), fits ? value : 7);
        EXPECT_EQ(refusalOf([&] { Vlan made(value); }), fits ? "" : refusal) << value;
        EXPECT_EQ(Vlan::parse(std::to_string(value), &vlan), fits);
        EXPECT_EQ(Kcore::textOf(vlan), fits ? std::to_string(value) : "7");
    }
    Vlan vlan(7);
    for (const char* text : {"", " 1", "1 ", "-1", "+1", "0x1", "1:"}) EXPECT_FALSE(Vlan::parse(text, &vlan)) << text;
    EXPECT_EQ(vlan, Vlan(7));
    EXPECT_TRUE(Vlan() < vlan && Vlan().value() == 0);
}

TEST(BridgingVlanId, HasAnUpperBound) {
    expectBound<VlanId>(4095, "Bridging::VlanId::value > 4095 not allowed");
    expectBound<VlanIdOrNone>(4094, "Bridging::VlanIdOrNone::value > 4094 not allowed");
    const VlanId fromOrNone = VlanIdOrNone(4094);
    EXPECT_EQ(fromOrNone, VlanId(4094));
    EXPECT_EQ(Kcore::hashOf(fromOrNone), Kcore::hashOf(VlanId(4094)));
}

TEST(BridgingConfig, KeepsOneEntryForEachInterface) {
    const auto config = Kcore::makeNode<Config>();
    const auto intf = [](unsigned i) { return IntfId("Ethernet" + std::to_string(i)); };
    for (unsigned i = 1; i <= 64; ++i) config->switchIntfConfigIs(intf(i))->nativeVlanIs(VlanId(i));
    for (unsigned i = 64; i >= 1; --i) {
        const auto again = config->switchIntfConfigIs(intf(i));
        EXPECT_EQ(again->nativeVlan(), VlanId(i));
        EXPECT_EQ(config->switchIntfConfig(intf(i)), again);
    }
    EXPECT_EQ(config->switchIntfConfig().size(), 64u);
    EXPECT_FALSE(config->switchIntfConfig(intf(65)));
    EXPECT_FALSE(config->switchIntfConfig(IntfId()));

    const SwitchIntfConfig::Ptr removed = config->switchIntfConfigDel(intf(9));
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->nativeVlan(), VlanId(9));
    EXPECT_EQ(removed->useCount(), 1u);
    EXPECT_FALSE(config->switchIntfConfigDel(intf(9)));
    EXPECT_FALSE(config->switchIntfConfig(intf(9)));
    EXPECT_EQ(config->switchIntfConfig(intf(64))->nativeVlan(), VlanId(64));
}

TEST(BridgingConfig, AnEntryShowsItsAttributes) {
    const auto entry = Kcore::makeNode<SwitchIntfConfig>();
    const auto table = [&] {
        std::string text;
        for (const auto& attribute : entry->typeData().attributes()) {
            attribute.appendText(text.append(attribute.name).append("="), static_cast<const Kcore::Node*>(entry.get()));
            text.append(";");
        }
        return text;
    };
    EXPECT_EQ(table(), "nativeVlan=1;switchportMode=access;");
    entry->nativeVlanIs(VlanId(20));
    entry->switchportModeIs(SwitchportModeInstance(2));
    EXPECT_EQ(table(), "nativeVlan=20;switchportMode=dot1qTunnel;");
}

}  // namespace
