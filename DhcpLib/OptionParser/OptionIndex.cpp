#include "DhcpLib/OptionParser/internal/OptionIndex.h"

#include "DhcpLib/DhcpHdr/Options.h"

namespace DhcpLib {

OptionIndex::OptionIndex(Wire::ByteView bytes, U32 offset) : bytes_(bytes), offset_(offset) {
    state_ = walkOptionsArea(bytes, offset, [this](const auto& head) { note(static_cast<U8>(head.code), head.at); });
}

/// Whether there is anything but pads and the end option.
bool OptionIndex::isOptionThere() const {
    constexpr U64 pad = 1, end = U64{1} << 63;
    return ((there_[0] & ~pad) | there_[1] | there_[2] | (there_[3] & ~end)) != 0;
}

OptionIndex::Collected OptionIndex::collected(bool withMaxMsgSize) const {
    constexpr U8 info = static_cast<U8>(DhcpOptionType::infoOpt), end = static_cast<U8>(DhcpOptionType::endOpt),
                 maxMsgSize = static_cast<U8>(DhcpOptionType::maxMsgSize);
    Collected found;
    const U16 cookieAt = static_cast<U16>(offset_ + Constants::bootpHdrSize);
    const U16 base = static_cast<U16>(cookieAt + sizeof(U32));
    found.cookie = bytes_.loadRaw(cookieAt) == Constants::dhcpMagicCookie;
    if (!found.cookie) return found;

    // Both walks agree up to the end option, so the second one starts there, unless positions wrap at 65536.
    U16 start = 0;
    const bool unwrapped = U64{offset_} + Constants::bootpHdrSize + sizeof(U32) == base && bytes_.size() <= 0xffff;
    if (wellFormed() && unwrapped) {
        start = static_cast<U16>(last_[end] - base);
        found.any = isOptionThere();
        found.info = first(info);
        found.maxMsgSize = first(maxMsgSize);
    }
    walkMsgOptions(bytes_, base, start, [&](const auto& head) {
        found.any = true;
        RawOption* slot = head.code == info ? &found.info : head.code == end ? &found.end : nullptr;
        if (head.code == maxMsgSize) slot = &found.maxMsgSize;
        if (slot != nullptr && !*slot) *slot = RawOption(bytes_, head.at, Positions::ofViews);
        return !(found.info && found.end && (found.maxMsgSize || !withMaxMsgSize));
    });
    return found;
}

}  // namespace DhcpLib
