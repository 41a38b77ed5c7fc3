#include "common/Printable.h"

#include <algorithm>

namespace DhcpTool {

namespace {

bool isPrintableAscii(char c) { return c >= ' ' && c <= '~'; }

struct Character {
    char32_t code = 0;
    std::size_t bytes = 0;  ///< 0: not valid UTF-8
};

/// The UTF-8 sequence at the start of `text`, which is not empty (RFC 3629).
Character characterOf(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80) return {first, 1};
    const std::size_t bytes = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < bytes) return {};
    char32_t code = first & (0x7fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80) return {};
        code = code << 6 | (byteAt(i) & 0x3f);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return code < smallest[bytes] || surrogate || code > 0x10ffff ? Character{} : Character{code, bytes};
}

bool isBetween(char32_t code, char32_t first, char32_t last) { return code >= first && code <= last; }

/// Controls, line separators, and marks that change the direction of text or are invisible.
bool isHarmful(char32_t code) {
    return code < ' ' || isBetween(code, 0x7f, 0x9f) || code == 0xad || code == 0x61c ||
           isBetween(code, 0x200b, 0x200f) || isBetween(code, 0x2028, 0x202e) || isBetween(code, 0x2060, 0x206f) ||
           code == 0xfeff || isBetween(code, 0xfff0, 0xfffb) || isBetween(code, 0xe0000, 0xe007f);
}

std::size_t printableBytes(std::string_view text) {
    std::size_t printable = 0;
    while (!text.empty()) {
        const Character next = characterOf(text);
        if (next.bytes != 0 && !isHarmful(next.code)) printable += next.bytes;
        text.remove_prefix(std::max<std::size_t>(next.bytes, 1));
    }
    return printable;
}

void append(std::string& out, std::string_view text, bool quoted) {
    while (!text.empty()) {
        const auto plain = std::ranges::find_if_not(
            text, [&](char c) { return isPrintableAscii(c) && !(quoted && (c == '"' || c == '\\')); });
        const auto run = static_cast<std::size_t>(plain - text.begin());
        out.append(text.substr(0, run));
        text.remove_prefix(run);
        if (text.empty()) return;
        const Character next = characterOf(text);
        const std::size_t bytes = std::max<std::size_t>(next.bytes, 1);
        if (next.bytes == 0 || isHarmful(next.code)) {
            for (std::size_t i = 0; i < bytes; ++i) appendHex(out.append("\\x"), text.substr(i, 1));
        } else {
            if (next.bytes == 1) out.push_back('\\');
            out.append(text.substr(0, bytes));
        }
        text.remove_prefix(bytes);
    }
}

}  // namespace

char* writeHex(char* to, std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        *to++ = digits[value >> 4];
        *to++ = digits[value & 15];
    }
    return to;
}

void appendHex(std::string& out, std::string_view bytes) {
    const std::size_t at = out.size();
    out.resize(at + 2 * bytes.size());
    writeHex(out.data() + at, bytes);
}

std::string hex(std::string_view bytes) {
    std::string out;
    appendHex(out, bytes);
    return out;
}

void appendHarmless(std::string& out, std::string_view text) { append(out, text, false); }

std::string harmless(std::string_view text) {
    std::string out;
    appendHarmless(out, text);
    return out;
}

void appendQuotedText(std::string& out, std::string_view text) {
    out.push_back('"');
    append(out, text, true);
    out.push_back('"');
}

std::string quotedText(std::string_view text) {
    std::string out;
    appendQuotedText(out, text);
    return out;
}

void appendTextOrHex(std::string& out, std::string_view bytes) {
    if (2 * printableBytes(bytes) >= bytes.size())
        appendQuotedText(out, bytes);
    else
        appendHex(out.append("0x"), bytes);
}

std::string textOrHex(std::string_view bytes) {
    std::string out;
    appendTextOrHex(out, bytes);
    return out;
}

}  // namespace DhcpTool
