#include "DhcpLib/OptionParser/InfoRemoval.h"

#include "DhcpLib/OptionParser/internal/OptionIndex.h"

namespace DhcpLib {

namespace {

constexpr U8 infoCode = static_cast<U8>(DhcpOptionType::infoOpt), endCode = static_cast<U8>(DhcpOptionType::endOpt);
constexpr U32 endBytes = 1;

/// Number of options 82 after the end option, from `first` on.
U32 countBehindEnd(Wire::ByteView bytes, U32 first) {
    U32 count = 0;
    const auto inside = [&](U32 at) { return at < bytes.size(); };
    walkItems<OptionShape, U32>(bytes, 0, first, inside, [&](const auto& head, U32) {
        if (head.code == infoCode) ++count;
        return true;
    });
    return count;
}

/// Moves the remaining options to the front. Returns the position after the end option. Requires: a well-formed area.
U32 closeGaps(Kitnet::Pkt& pkt, U32 offset) {
    U32 from = offset + Constants::bootpHdrSize + U32{sizeof(Constants::dhcpMagicCookie)}, to = from;
    // A move changes no byte after the option that the walk has reached.
    walkOptionsArea(Wire::ByteView(pkt), offset, [&](const auto& head) {
        const U32 bytes = head.code == endCode ? endBytes : head.wireBytes;
        if (head.code != infoCode) {
            Wire::move(pkt, to, from, bytes);
            to += bytes;
        }
        from += bytes;
    });
    return to;
}

}  // namespace

InfoRemoval removeInfoOption(const PktPtr& pkt, U32 offset) {
    const Wire::ByteView bytes(pkt.get());
    InfoRemoval done;
    U32 endAt = 0;
    done.area = walkOptionsArea(bytes, offset, [&](const auto& head) {
        if (head.code == infoCode) ++done.options;
        endAt = head.at;
    });
    if (done.area != AreaState::wellFormed) return {done.area, 0};
    done.options += countBehindEnd(bytes, endAt + endBytes);
    if (done.options == 0) return done;
    const U32 end = closeGaps(*pkt, offset);
    Wire::fill(*pkt, end, pkt->bytes() - end, 0);
    return done;
}

}  // namespace DhcpLib
