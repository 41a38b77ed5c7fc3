#pragma once

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Kcore/Ptr.h"
#include "Kitnet/Pkt.h"

namespace DhcpTest {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;
using Octets = std::vector<U8>;
using PktPtr = Kcore::Ptr<Kitnet::Pkt>;

/// Bytes in the notation of test rows: "35 01 05" in hex, "00*12" for twelve bytes 00, "'abc'" for text.
inline Octets hex(std::string_view text) {
    Octets bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ') {
            ++i;
        } else if (text[i] == '\'') {
            for (++i; text.at(i) != '\''; ++i) bytes.push_back(static_cast<U8>(text[i]));
            ++i;
        } else if (text[i] == '*') {
            char* end = nullptr;
            bytes.insert(bytes.end(), std::strtoul(&text[i + 1], &end, 10) - 1, bytes.back());
            i = static_cast<std::size_t>(end - text.data());
        } else {
            const auto digit = [&](char c) { return std::string_view("0123456789ABCDEF").find(c); };
            bytes.push_back(static_cast<U8>(digit(text.at(i)) << 4 | digit(text.at(i + 1))));
            i += 2;
        }
    }
    return bytes;
}

inline Octets operator+(Octets head, const Octets& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

inline Octets first(const Octets& bytes, std::size_t n) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n)};
}

/// Writes `written` over the bytes from `at` on.
inline void overwrite(Octets& bytes, std::size_t at, const Octets& written) {
    std::copy(written.begin(), written.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

inline constexpr U8 scratch = 0xa5;

/// A DHCP message: a BOOTP header filled with `scratch`, the magic cookie, then `options`.
inline Octets message(const Octets& options) { return Octets(236, scratch) + hex("63 82 53 63") + options; }
inline Octets message(std::string_view options) { return message(hex(options)); }

inline PktPtr packet(const Octets& bytes, Kitnet::Pkt::Storage storage = Kitnet::Pkt::Storage::tight) {
    return Kitnet::Pkt::Manager(storage).newPkt(bytes);
}

/// The packet in every kind of storage: ending where the buffer ends, and followed by two kinds of junk, which must not
/// change any result.
inline std::vector<PktPtr> packets(const Octets& bytes) {
    std::vector<PktPtr> all{packet(bytes)};
    for (const U8 junk : {U8{0xff}, U8{0x01}}) {
        const PktPtr pkt = packet(bytes + Octets(Kitnet::Pkt::guardBytes, junk), Kitnet::Pkt::Storage::roomy);
        pkt->delSharedTailData(Kitnet::Pkt::guardBytes);
        all.push_back(pkt);
    }
    return all;
}

inline Octets bytesOf(const Kitnet::Pkt& pkt) { return {pkt.data(), pkt.data() + pkt.bytes()}; }

}  // namespace DhcpTest
