#pragma once

#include "Bridging/Config.h"
#include "Kitnet/IntfId.h"

namespace DhcpTest::Fuzz {

/// No port, an access port, a tunnel port, and a port that the switch does not know.
inline const Kitnet::IntfId ports[] = {Kitnet::IntfId(), Kitnet::IntfId("Ethernet1"), Kitnet::IntfId("Ethernet2"),
                                       Kitnet::IntfId("Ethernet3")};

inline Kcore::Ptr<const Bridging::Config> config() {
    const auto made = Kcore::makeNode<Bridging::Config>();
    made->switchIntfConfigIs(ports[1])->nativeVlanIs(Bridging::VlanId(10));
    made->switchIntfConfigIs(ports[2])->switchportModeIs(Bridging::SwitchportMode::dot1qTunnel);
    return made;
}

}  // namespace DhcpTest::Fuzz
