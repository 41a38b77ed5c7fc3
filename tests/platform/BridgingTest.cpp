#include "Bridging/Config.h"

#include <gtest/gtest.h>

#include <string>

#include "Refusal.h"

using namespace Bridging;

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

}  // namespace
