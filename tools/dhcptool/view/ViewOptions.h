#pragma once

#include "view/View.h"

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds the options of the views to a command. `settings` has to live as long as the command; `coloured` is set after
/// the command line is parsed.
void addViewOptions(CLI::App& command, ViewSettings& settings);

/// Adds --time and --color alone.
void addTimeOption(CLI::App& command, TimeForm& form);
void addColorOption(CLI::App& command, bool& coloured);

}  // namespace DhcpTool
