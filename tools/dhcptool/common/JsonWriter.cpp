#include "common/JsonWriter.h"

namespace DhcpTool {

void JsonWriter::string(std::string_view text) {
    const auto isPlain = [](char c) { return static_cast<unsigned char>(c) >= ' ' && c != '"' && c != '\\'; };
    if (std::ranges::all_of(text, isPlain)) return plain(text);
    built([&](std::string& out) {
        while (!text.empty()) {
            const auto run = static_cast<std::size_t>(std::ranges::find_if_not(text, isPlain) - text.begin());
            out.append(text.substr(0, run));
            text.remove_prefix(run);
            if (text.empty()) break;
            if (text.front() == '"' || text.front() == '\\')
                out.append({'\\', text.front()});
            else
                appendHex(out.append("\\u00"), text.substr(0, 1));
            text.remove_prefix(1);
        }
    });
}

}  // namespace DhcpTool
