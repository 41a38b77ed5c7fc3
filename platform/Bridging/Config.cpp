#include "Bridging/Config.h"

namespace Bridging {

namespace {

const Kcore::ModuleTypes<SwitchportMode, VlanId, VlanIdOrNone, SwitchIntfConfig, Config> registration{"Bridging"};

}  // namespace

SwitchIntfConfig::~SwitchIntfConfig() = default;
const Kcore::TypeData& SwitchIntfConfig::typeData() const { return Kcore::typeDataOf<SwitchIntfConfig>(); }

Config::~Config() = default;
const Kcore::TypeData& Config::typeData() const { return Kcore::typeDataOf<Config>(); }

SwitchIntfConfig::Ptr Config::switchIntfConfigIs(const Kitnet::IntfId& intf) {
    if (const SwitchIntfConfig::Ptr& entry = switchIntfConfig(intf)) return entry;
    auto made = Kcore::makeNode<SwitchIntfConfig>();
    switchIntfConfig_.insert(intf, made);
    return made;
}

SwitchIntfConfig::Ptr Config::switchIntfConfigDel(const Kitnet::IntfId& intf) {
    return switchIntfConfig_.erase(intf).value_or(nullptr);
}

}  // namespace Bridging
