#include "DhcpLib/OptionParser/internal/OptionIndex.h"

#include "DhcpLib/DhcpHdr/Options.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr char parseSignature[] =
    "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, std::vector<DhcpLib::DhcpSingleOptionWithCode>&)";

}  // namespace

const Kcore::String bootpMessageName = "BOOTP";

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

void traceAreaFailure(AreaState state, Kcore::SourceSite caller) {
    if (state == AreaState::wellFormed) return;
    std::string_view why = noEndOptionText;
    if (state == AreaState::noSpace) why = "DHCP packet has no space for option fields";
    if (state == AreaState::noCookie) why = withoutBlank(noCookieText);
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {parseSignature, caller}, "{}{}", parseSignature, why);
}

Kcore::String messageTypeOf(const OptionIndex& index, U8& msgType) {
    if (index.state() == AreaState::noCookie) return bootpMessageName;
    traceAreaFailure(index.state());
    if (!index.wellFormed()) return "INVALID DHCP";
    const RawOption option = index.last(DhcpOptionType::msgType);
    if (!option) return {};
    const U8 type = option.load<U8>();
    if (type == 0 || type >= DhcpMsgTypeTbl.size()) return {};
    msgType = type;
    return DhcpMsgTypeTbl[type];
}

}  // namespace DhcpLib
