#include "common/HexBytes.h"

#include <charconv>

namespace DhcpTool {

std::optional<std::string> bytesOfHex(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        if (!bytes.empty() && text.front() == ':') text.remove_prefix(1);
        unsigned char byte = 0;
        const char* const pairEnd = text.data() + 2;
        if (text.size() < 2 || std::from_chars(text.data(), pairEnd, byte, 16).ptr != pairEnd) return std::nullopt;
        bytes.push_back(static_cast<char>(byte));
        text.remove_prefix(2);
    }
    return bytes;
}

}  // namespace DhcpTool
