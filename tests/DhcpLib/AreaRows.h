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

/// Expects that `read(pkt, offset)` returns the text of the row, whatever bytes follow the packet, and writes nothing.
template <std::size_t n, class Read>
void expectFound(const Area (&rows)[n], Read read) {
    for (const Area& row : rows)
        for (const PktPtr& pkt : packets(hex(row.bytes))) {
            EXPECT_EQ(read(pkt, row.offset), row.found) << row.rule;
            EXPECT_EQ(bytesOf(*pkt), hex(row.bytes)) << row.rule;
        }
}

/// "code@offset+len" of a view.
template <class View>
std::string placeOf(const View& view) {
    return std::to_string(view.opt()) + '@' + std::to_string(view.offset()) + '+' + std::to_string(view.len()) + ' ';
}
/// The text of each view, by code.
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
