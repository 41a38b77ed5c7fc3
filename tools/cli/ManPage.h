#pragma once

#include <string>

#include "CommandText.h"
#include "Program.h"

namespace Cli {

/// The manual page of a program with its commands, for man(7).
std::string manPage(const CommandText& command, const Program& program);

}  // namespace Cli
