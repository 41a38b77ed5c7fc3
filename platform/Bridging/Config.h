#pragma once

#include "Bridging/VlanId.h"
#include "Kcore/Enum.h"
#include "Kcore/FlatMap.h"
#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"
#include "Kitnet/IntfId.h"

namespace Bridging {

/// How a switch port treats VLAN tags. `dot1qTunnel`: a customer's tag is ordinary payload.
enum class SwitchportMode : Kcore::U8 { access = 0, trunk = 1, dot1qTunnel = 2 };

}  // namespace Bridging

template <>
struct Kcore::EnumTable<Bridging::SwitchportMode> {
    static constexpr std::string_view name = "SwitchportMode";
    static constexpr EnumMember<Bridging::SwitchportMode> members[] = {
        {Bridging::SwitchportMode::access, "access"},
        {Bridging::SwitchportMode::trunk, "trunk"},
        {Bridging::SwitchportMode::dot1qTunnel, "dot1qTunnel"},
    };
};

namespace Bridging {

using Kcore::sequenceToValue;
using Kcore::stringValue;

inline SwitchportMode SwitchportModeInstance(unsigned number) { return Kcore::enumInstance<SwitchportMode>(number); }
inline SwitchportMode SwitchportModeInstance(const Kcore::String& name) {
    return Kcore::enumInstance<SwitchportMode>(name);
}

/// The bridging configuration of one interface. By default an access port of VLAN 1 (the default of IEEE 802.1Q).
class DHCPPLATFORM_EXPORT SwitchIntfConfig final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<SwitchIntfConfig>;

    ~SwitchIntfConfig() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("SwitchIntfConfig", Kcore::attribute("nativeVlan", &SwitchIntfConfig::nativeVlan_),
                              Kcore::attribute("switchportMode", &SwitchIntfConfig::switchportMode_));
    }

    /// The VLAN of frames that arrive without a tag.
    VlanId nativeVlan() const { return nativeVlan_; }
    void nativeVlanIs(VlanId vlan) { nativeVlan_ = vlan; }
    /// How the port treats VLAN tags.
    SwitchportMode switchportMode() const { return switchportMode_; }
    void switchportModeIs(SwitchportMode mode) { switchportMode_ = mode; }

private:
    VlanId nativeVlan_{1};
    SwitchportMode switchportMode_ = SwitchportMode::access;
};

/// VLAN settings of all interfaces of the switch.
class DHCPPLATFORM_EXPORT Config final : public Kcore::Node {
public:
    using Ptr = Kcore::Ptr<Config>;
    using SwitchIntfConfigs = Kcore::FlatMap<Kitnet::IntfId, SwitchIntfConfig::Ptr>;  ///< the entries by interface

    ~Config() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare("Config", Kcore::attribute("switchIntfConfig", &Config::switchIntfConfig_));
    }

    /// All entries.
    const SwitchIntfConfigs& switchIntfConfig() const { return switchIntfConfig_; }
    /// The interface's entry, or null. The reference is valid until the collection changes.
    const SwitchIntfConfig::Ptr& switchIntfConfig(const Kitnet::IntfId& intf) const {
        const SwitchIntfConfig::Ptr* const entry = switchIntfConfig_.find(intf);
        return entry != nullptr ? *entry : absent_;
    }
    /// The interface's entry; creates it if there is none.
    SwitchIntfConfig::Ptr switchIntfConfigIs(const Kitnet::IntfId& intf);
    /// Removes the interface's entry and returns it; null if there is none.
    SwitchIntfConfig::Ptr switchIntfConfigDel(const Kitnet::IntfId& intf);

private:
    // Each parser changes the use count. In cache lines of its own the object does not slow down other threads.
    alignas(64) SwitchIntfConfigs switchIntfConfig_;
    const SwitchIntfConfig::Ptr absent_{};
};

}  // namespace Bridging
