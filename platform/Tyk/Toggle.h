#pragma once

#include <string_view>

#include "Kcore/Export.h"

namespace Tyk {

/// Whether the feature `name` is on. Reads `file` at each call, from the folder that DHCPLIB_TOGGLE_DIR in the
/// environment names, else from the installed configuration folder. The file contains a JSON object of booleans, has at
/// most 64 KiB, and its names contain no escapes. Returns `dflt` if the file is missing, unreadable or malformed or
/// does not contain `name`, after one level-1 trace line of "Tyk" with the reason.
DHCPPLATFORM_EXPORT bool getToggleState(std::string_view name, std::string_view file, bool dflt);

}  // namespace Tyk
