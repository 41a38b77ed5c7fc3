#pragma once

#include "DhcpLib/Walk.h"

namespace DhcpLib {

/// Trace texts that several functions share. Each function puts its own signature in front; some leave out the blank.
inline constexpr std::string_view noCookieText = " DHCP packet missing magic cookie";
inline constexpr std::string_view noEndOptionText = " DHCP packet missing end option";
inline constexpr std::string_view emptyInfoText = "Info opt present but length is zero";
inline constexpr std::string_view withoutBlank(std::string_view text) { return text.substr(1); }

/// For functions that are given a pointer without a size: all bytes from `start` on; none if it is null.
inline Wire::ByteView unboundedFrom(const void* start) {
    return {static_cast<const U8*>(start), start != nullptr ? Wire::unbounded : 0};
}

/// Calls `visit(code, at)` for the sub-options from `first` on, until the bytes counted reach `total`. A pad is counted
/// with a length byte (docs/compatibility.md#sub-option-count-drifts-after-a-pad), and the first item is visited even
/// if `total` is 0 (docs/compatibility.md#first-item-always-read).
template <class Visit>
void walkSubOptsInOption(Wire::ByteView bytes, U32 first, std::size_t total, Visit visit) {
    std::size_t walked = 0;
    const auto always = [](U32) { return true; };
    walkItems<PaddedItemShape, U32>(bytes, 0, first, always, [&](const auto& head, U32) {
        visit(static_cast<U8>(head.code), head.at);
        walked += bytes.load<U8>(head.at + 1) + PaddedItemShape::headerBytes;
        return walked < total;
    });
}

/// Calls `visit(head)` for the sub-options from `first` on that start below `end`. There are no pads.
template <class Visit>
void walkSubOptionsUpTo(Wire::ByteView bytes, U32 first, U32 end, Visit visit) {
    const auto inside = [&](U32 at) { return at < end; };
    walkItems<SubOptionShape, U32>(bytes, 0, first, inside, [&](const auto& head, U32) {
        visit(head);
        return true;
    });
}

}  // namespace DhcpLib
