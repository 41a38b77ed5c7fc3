#include "Kitnet/EthAddr.h"

#include <charconv>

namespace Kitnet {

namespace {

constexpr std::size_t charsPerByte = 3;  // two digits and a colon
constexpr std::size_t textBytes = charsPerByte * EthAddr::wireBytes - 1;

}  // namespace

void EthAddr::appendText(std::string& out) const {
    constexpr char digits[] = "0123456789abcdef";
    for (const U8 b : bytes_) out.append({digits[b >> 4], digits[b & 15], ':'});
    out.pop_back();
}

bool EthAddr::parse(std::string_view text, EthAddr* value) {
    if (text.size() != textBytes) return false;
    EthAddr read;
    for (std::size_t i = 0; i < wireBytes; ++i) {
        const char* const pair = text.data() + charsPerByte * i;
        if (i != 0 && pair[-1] != ':') return false;
        if (std::from_chars(pair, pair + 2, read.bytes_[i], 16).ptr != pair + 2) return false;
    }
    *value = read;
    return true;
}

}  // namespace Kitnet
