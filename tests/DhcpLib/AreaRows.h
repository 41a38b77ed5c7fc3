#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Bytes.h"

/// Tables of what a reader finds in bytes, as text.
namespace DhcpTest {

inline constexpr char noRoom[] = "length value exceeds pkt-length.";

struct Area {
    const char* rule;
    U16 offset;
    std::string bytes;
    std::string found;
};

/// At every cut, what stands behind the packet has no part in what `read(pkt, offset)` finds, and nothing is written.
template <std::size_t n, class Read>
void expectFound(const Area (&rows)[n], Read read) {
    for (const Area& row : rows) {
        SCOPED_TRACE(row.rule);
        const Octets bytes = hex(row.bytes);
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            const Octets cut = first(bytes, size);
            const std::string alone = read(packet(cut), row.offset);
            for (const PktPtr& pkt : packets(cut)) {
                EXPECT_EQ(read(pkt, row.offset), alone) << "cut to " << size << " bytes, with others behind";
                EXPECT_EQ(bytesOf(*pkt), cut);
            }
            EXPECT_EQ(size < bytes.size() ? row.found : alone, row.found);
        }
    }
}

/// "code@offset+len" of a view.
template <class View>
std::string placeOf(const View& view) {
    return std::to_string(view.opt()) + '@' + std::to_string(view.offset()) + '+' + std::to_string(view.len()) + ' ';
}
/// Of each view, by code.
template <class Collection>
std::string kept(const Collection& collection) {
    std::map<unsigned, std::string> byCode;
    for (const auto& [type, view] : collection.option()) {
        EXPECT_EQ(view->optType(), type);
        byCode[view->opt()] = placeOf(*view);
    }
    std::string all;
    for (const auto& [code, text] : byCode) all += text;
    return all;
}

}  // namespace DhcpTest
