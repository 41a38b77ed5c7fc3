#pragma once

#include <string>

#include "CommandText.h"

namespace Cli {

/// Scripts with which a shell completes commands, options and their values: files for FILE, this host's interfaces for
/// IFACE and LINK, and the choices of an option that has them. A program with commands also takes a file as its first
/// argument.
std::string bashCompletion(const CommandText& program);
std::string zshCompletion(const CommandText& program);
std::string fishCompletion(const CommandText& program);

}  // namespace Cli
