#pragma once

#include <string>
#include <string_view>

namespace DhcpTool {

/// "0a1b" for the bytes 0A 1B.
std::string hex(std::string_view bytes);

/// Between quotes, bytes outside printable ASCII as \xNN, a quote or backslash with a backslash in front.
std::string quoted(std::string_view bytes);

/// A byte string from the wire for people: quoted where every byte is printable ASCII, else 0x and its hex.
std::string textOrHex(std::string_view bytes);

/// A message of ours or of a library that may quote what strangers chose, such as a file name: every byte outside
/// printable ASCII as \xNN, so that it cannot steer a terminal.
std::string harmless(std::string_view message);

}  // namespace DhcpTool
