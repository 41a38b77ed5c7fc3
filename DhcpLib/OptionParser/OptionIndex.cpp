#include "DhcpLib/OptionParser/internal/OptionIndex.h"

#include "DhcpLib/DhcpHdr/Options.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr char parseSignature[] =
    "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, std::vector<DhcpLib::DhcpSingleOptionWithCode>&)";

/// The options area of a message as views see it, with 16-bit positions.
struct CollectedArea {
    CollectedArea(Wire::ByteView itsBytes, U32 offset)
        : bytes(itsBytes),
          cookieAt(static_cast<U16>(offset + Constants::bootpHdrSize)),
          base(static_cast<U16>(cookieAt + sizeof(U32))),
          wideBase(U64{offset} + Constants::bootpHdrSize + sizeof(U32)) {}

    bool hasCookie() const { return bytes.loadRaw(cookieAt) == Constants::dhcpMagicCookie; }
    bool unwrapped() const { return wideBase == base && bytes.size() <= 0xffff; }
    /// Calls `keep(code, position)` for each option until it returns false.
    template <class Keep>
    void walk(U16 start, Keep keep) const {
        walkMsgOptions(bytes, base, start, [&keep](const auto& head) { return keep(head.code, head.at); });
    }

    Wire::ByteView bytes;
    U16 cookieAt, base;
    U64 wideBase;
};

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

CollectedOptions OptionIndex::collected() const {
    constexpr U8 info = static_cast<U8>(DhcpOptionType::infoOpt), end = static_cast<U8>(DhcpOptionType::endOpt);
    CollectedOptions found;
    const CollectedArea area(bytes_, offset_);
    found.cookie = area.hasCookie();
    if (!found.cookie) return found;

    // Both walks agree up to the end option, so the second one starts there, unless positions wrap at 65536.
    U16 start = 0;
    if (wellFormed() && area.unwrapped()) {
        start = static_cast<U16>(last_[end] - area.base);
        found.any = isOptionThere();
        found.info = first(info);
    }
    area.walk(start, [&](U8 code, U32 at) {
        found.any = true;
        RawOption* const slot = code == info ? &found.info : code == end ? &found.end : nullptr;
        if (slot != nullptr && !*slot) *slot = RawOption(bytes_, at, Positions::ofViews);
        return !(found.info && found.end);
    });
    return found;
}

CollectedOptions collectOptions(Wire::ByteView bytes, U32 offset) {
    CollectedOptions found;
    const CollectedArea area(bytes, offset);
    found.cookie = area.hasCookie();
    if (!found.cookie) return found;

    constexpr U32 none = 0xffffffff;
    U32 info = none, end = none, maxMsgSize = none;  // plain locals stay in registers during the walk
    const auto keepFirst = [&](U8 code, U32 at) {
        found.any = true;
        if (code == static_cast<U8>(DhcpOptionType::infoOpt) && info == none) [[unlikely]]
            info = at;
        if (code == static_cast<U8>(DhcpOptionType::maxMsgSize) && maxMsgSize == none) [[unlikely]]
            maxMsgSize = at;
        if (code == static_cast<U8>(DhcpOptionType::endOpt) && end == none) [[unlikely]]
            end = at;
    };
    // The walk with 32-bit positions is faster. Both agree up to the end option, unless positions wrap at 65536.
    U16 start = 0;
    if (area.unwrapped()) {
        const AreaState state = walkOptionsArea(bytes, offset, [&](const auto& head) {
            if (!head.pad) keepFirst(head.code, head.at);
        });
        if (state == AreaState::wellFormed)
            start = static_cast<U16>(end - area.base);
        else
            info = end = maxMsgSize = none, found.any = false;
    }
    area.walk(start, [&](U8 code, U32 at) {
        keepFirst(code, at);
        return end == none || info == none || maxMsgSize == none;
    });
    const auto option = [&](U32 at) { return at == none ? RawOption() : RawOption(bytes, at, Positions::ofViews); };
    found.info = option(info);
    found.end = option(end);
    found.maxMsgSize = option(maxMsgSize);
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
