#include "DhcpLib/OptionParser/internal/ProfilingReader.h"

#include <array>
#include <cstring>

namespace DhcpLib {

namespace {

/// The text of a code and a comma in four bytes, and how many of them are used.
struct DecimalCode {
    char text[4];
    U8 size;
};

constexpr std::array<DecimalCode, 256> decimalCodes = [] {
    std::array<DecimalCode, 256> all{};
    for (unsigned code = 0; code < all.size(); ++code) {
        DecimalCode& entry = all[code];
        for (unsigned unit = 100; unit != 0; unit /= 10)
            if (code >= unit || unit == 1) entry.text[entry.size++] = static_cast<char>('0' + code / unit % 10);
        entry.text[entry.size++] = ',';
    }
    return all;
}();

}  // namespace

Kcore::String decimalList(std::string_view codes) {
    constexpr std::size_t longestOption = 255;
    char text[(longestOption + 1) * sizeof(DecimalCode::text)];
    std::size_t size = 0;
    for (const char code : codes.substr(0, longestOption)) {
        const DecimalCode& entry = decimalCodes[static_cast<U8>(code)];
        std::memcpy(text + size, entry.text, sizeof entry.text);
        size += entry.size;
    }
    return size == 0 ? Kcore::String() : Kcore::String(text, size - 1);
}

}  // namespace DhcpLib
