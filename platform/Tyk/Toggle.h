#pragma once

#include <string_view>

#include "Kcore/Export.h"

namespace Tyk {

/// Whether the feature `name` is on, read anew at each call from `file` (no folder): a JSON object of booleans of at
/// most 64 KiB whose names are written without escapes, in the folder that the environment's DHCPLIB_TOGGLE_DIR
/// names, else in the installed configuration folder. A file that is missing, unreadable or malformed (however
/// `name` stands in it) or does not hold `name` gives `dflt`, after one level-1 trace line of "Tyk" that says why.
DHCPPLATFORM_EXPORT bool getToggleState(std::string_view name, std::string_view file, bool dflt);

}  // namespace Tyk
