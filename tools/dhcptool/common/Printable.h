#pragma once

#include <string>
#include <string_view>

namespace DhcpTool {

/// Writes two digits for each byte. Returns the end. Requires: room for them.
char* writeHex(char* to, std::string_view bytes);
/// Appends "0a1b" for the bytes 0A 1B.
void appendHex(std::string& out, std::string_view bytes);
std::string hex(std::string_view bytes);

/// Appends text from outside, such as from a packet or a file name, so that it cannot control a terminal: printable
/// UTF-8 unchanged; each byte of control characters, of characters that change the direction of text or break lines,
/// and of invalid UTF-8 as \xNN.
void appendHarmless(std::string& out, std::string_view text);
std::string harmless(std::string_view text);

/// Appends the same in quotes, with a backslash in front of quotes and backslashes.
void appendQuotedText(std::string& out, std::string_view text);
std::string quotedText(std::string_view text);

/// Appends a byte string that may be text or binary: as quoted text if at least half of it is printable, else as 0x
/// and hexadecimal.
void appendTextOrHex(std::string& out, std::string_view bytes);
std::string textOrHex(std::string_view bytes);

}  // namespace DhcpTool
