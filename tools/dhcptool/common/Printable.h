#pragma once

#include <string>
#include <string_view>

namespace DhcpTool {

/// "0a1b" for the bytes 0A 1B.
std::string hex(std::string_view bytes);

/// In quotes. Bytes that are not printable ASCII become \xNN; quotes and backslashes get a backslash.
std::string quotedText(std::string_view bytes);

/// A byte string from a packet in readable form: quoted if all bytes are printable ASCII, else 0x and hexadecimal.
std::string textOrHex(std::string_view bytes);

/// A message that may contain text from outside, such as a file name. Bytes that are not printable ASCII become \xNN,
/// so that they cannot control a terminal.
std::string harmless(std::string_view message);

}  // namespace DhcpTool
