#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace DhcpTool {

/// The bytes of pairs of hexadecimal digits, with or without colons between them: "0102", "01:02". Unset if the text is
/// anything else; no bytes for an empty one.
std::optional<std::string> bytesOfHex(std::string_view text);

}  // namespace DhcpTool
