#pragma once

#include <string_view>

#include "DhcpLib/Walk.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// An option or sub-option of either protocol. Points into the packet's bytes.
struct Item {
    U16 code = 0;
    U16 length = 0;         ///< the length field
    U32 offset = 0;         ///< of the code, from the frame's first byte
    U32 dataOffset = 0;     ///< of the data
    std::string_view data;  ///< cut at the end of the bytes that contain the item

    /// Whether length field and data are there.
    bool isWhole() const { return whole && data.size() == length; }
    /// The value at `at` of the data. Missing bytes read as 0.
    template <class T>
    T load(U32 at = 0) const {
        return bytes().template load<T>(at);
    }
    DhcpLib::Wire::ByteView bytes() const {
        return {reinterpret_cast<const U8*>(data.data()), static_cast<U32>(data.size())};
    }

    bool whole = true;  ///< whether the length field is there
};

/// Calls `visit(item)` for each item from `first` on in `bytes`, which start at the frame's first byte and end with
/// the enclosing message or option, until it returns false. Pads are left out. The last item may be incomplete.
template <class Shape, class Visit>
void forEachItem(DhcpLib::Wire::ByteView bytes, U32 first, Visit visit) {
    const auto inside = [&](U32 at) { return at < bytes.size(); };
    DhcpLib::walkItems<Shape, U32>(bytes, 0, first, inside, [&](const auto& head, U32) {
        if (head.pad) return true;
        return visit(Item{head.code, head.len, head.at, head.dataAt(), bytes.text(head.dataAt(), head.len),
                          bytes.has(head.at, Shape::headerBytes)});
    });
}

/// Something wrong in a frame. The texts are static.
struct Fault {
    std::string_view what;       ///< such as "runs past the end of the frame"
    U32 offset = 0;              ///< from the frame's first byte
    std::string_view kind = {};  ///< "option" or "sub-option"; empty if it is not about one of these
    U16 code = 0;                ///< of the option
};

}  // namespace DhcpTool
