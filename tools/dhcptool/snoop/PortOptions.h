#pragma once

#include <string>
#include <vector>

#include "snoop/Snoop.h"

namespace DhcpTool {

/// What the command line says of ports: texts "VALUE" for all of them and "NAME=VALUE" for one. One of its own goes
/// before one for all, and of several the last one counts.
struct PortOptions {
    std::vector<std::string> nativeVlans, switchportModes;

    /// The settings of each of the ports. Raises CLI::ValidationError for a port that is none of them.
    std::map<Kitnet::IntfId, PortSettings> of(const std::vector<std::string>& ports) const;
};

/// What is wrong with such a text; empty where nothing is.
std::string nativeVlanFault(const std::string& text);
std::string switchportModeFault(const std::string& text);
std::string portNameFault(const std::string& name);

}  // namespace DhcpTool
