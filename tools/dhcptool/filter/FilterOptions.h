#pragma once

#include "filter/Filter.h"

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds the options of a filter to a command. `filter` has to live as long as the command.
void addFilterOptions(CLI::App& command, Filter& filter);

}  // namespace DhcpTool
