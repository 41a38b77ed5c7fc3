#include "common/Printable.h"

#include <algorithm>

#include "Kcore/Encoding.h"

namespace DhcpTool {

namespace {

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

void appendHex(std::string& out, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    out.append({digits[value >> 4], digits[value & 15]});
}

}  // namespace

std::string hex(std::string_view bytes) {
    std::string out;
    for (const char byte : bytes) appendHex(out, byte);
    return out;
}

std::string quotedText(std::string_view bytes) {
    std::string out;
    Kcore::appendQuoted(out, bytes);
    return out;
}

std::string textOrHex(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), isPrintable) ? quotedText(bytes) : "0x" + hex(bytes);
}

std::string harmless(std::string_view message) {
    std::string out;
    for (const char c : message) {
        if (isPrintable(c))
            out.push_back(c);
        else
            appendHex(out.append("\\x"), c);
    }
    return out;
}

}  // namespace DhcpTool
