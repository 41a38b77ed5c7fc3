#pragma once

#include <string>
#include <vector>

#include "snoop/Snoop.h"

namespace DhcpTool {

/// Settings of ports from the command line: "VALUE" for all ports and "NAME=VALUE" for one. A setting for one port wins
/// over one for all; otherwise the last one wins.
struct PortOptions {
    std::vector<std::string> nativeVlans, switchportModes;

    /// The settings of each port. Throws CLI::ValidationError for a name that is not one of them.
    std::map<Kitnet::IntfId, PortSettings> of(const std::vector<std::string>& ports) const;
};

/// An error message for an invalid text; empty if it is valid.
std::string nativeVlanFault(const std::string& text);
std::string switchportModeFault(const std::string& text);
std::string portNameFault(const std::string& name);

}  // namespace DhcpTool
