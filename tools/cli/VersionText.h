#pragma once

#include <string>
#include <string_view>

namespace Cli {

/// The text for --version: version, build and enterprise number.
std::string versionText(std::string_view program);

}  // namespace Cli
