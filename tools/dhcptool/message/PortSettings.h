#pragma once

#include <map>

#include "Bridging/Config.h"

namespace DhcpTool {

/// Settings of a switch port.
struct PortSettings {
    unsigned nativeVlan = 1;
    Bridging::SwitchportMode switchportMode = Bridging::SwitchportMode::access;
};

/// All ports on which frames arrive.
using Ports = std::map<Kitnet::IntfId, PortSettings>;

}  // namespace DhcpTool
