#pragma once

#include <string>
#include <vector>

#include "message/PortSettings.h"

namespace CLI {
class App;
}

namespace DhcpTool {

/// Settings of ports from the command line: "VALUE" for all ports and "NAME=VALUE" for one. A setting for one port wins
/// over one for all; otherwise the last one wins.
struct PortOptions {
    std::vector<std::string> nativeVlans, switchportModes;

    /// The settings of each port. Throws CLI::ValidationError for a name that is not one of them.
    Ports of(const std::vector<std::string>& ports) const;
};

/// Adds --native-vlan and --switchport-mode to a command. `options` has to live as long as the command.
void addPortOptions(CLI::App& command, PortOptions& options);

/// An error message for an invalid name of a port; empty if it is valid.
std::string portNameFault(const std::string& name);

}  // namespace DhcpTool
