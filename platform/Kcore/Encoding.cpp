#include "Kcore/Encoding.h"

namespace Kcore {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

bool isPlain(char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; }

/// Decodes the escape after a backslash. False if it is not valid.
bool takeEscape(CharRange& range, std::string& out) {
    if (range.take("\"")) return out.push_back('"'), true;
    if (range.take("\\")) return out.push_back('\\'), true;
    if (!range.take("x") || range.rest().size() < 2) return false;
    const std::size_t high = hexDigits.find(range.rest()[0]), low = hexDigits.find(range.rest()[1]);
    if (high == hexDigits.npos || low == hexDigits.npos) return false;
    out.push_back(static_cast<char>(high << 4 | low));
    return range.take(range.rest().substr(0, 2));
}

}  // namespace

void appendQuoted(std::string& out, std::string_view bytes) {
    out.push_back('"');
    for (const char c : bytes) {
        if (isPlain(c))
            out.push_back(c);
        else if (c == '"' || c == '\\')
            out.append({'\\', c});
        else
            out.append({'\\', 'x', hexDigits[static_cast<U8>(c) >> 4], hexDigits[c & 15]});
    }
    out.push_back('"');
}

bool sequenceToValue(CharRange& range, String* value) {
    CharRange ahead = range;
    std::string bytes;
    if (!ahead.take("\"")) return false;
    for (;;) {
        bytes.append(ahead.takeWhile(isPlain));
        if (ahead.take("\"")) break;
        if (!ahead.take("\\") || !takeEscape(ahead, bytes)) return false;
    }
    *value = bytes;
    range = ahead;
    return true;
}

bool sequenceToValue(CharRange& range, bool* value) {
    if (range.take("true")) return *value = true, true;
    if (range.take("false")) return *value = false, true;
    return false;
}

}  // namespace Kcore
