#include "DhcpLib/OptionParser/OptionLookup.h"

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/OptionParser/internal/SubOptionWalk.h"

namespace DhcpLib {

AreaState optionsAreaState(const PktPtr& pkt, U32 offset) {
    return walkOptionsArea(Wire::ByteView(pkt.get()), offset, [](const auto&) {});
}

FoundOption findOption(const PktPtr& pkt, U32 offset, U8 code) {
    const Wire::ByteView bytes(pkt.get());
    FoundOption found;
    walkOptionsArea(bytes, offset, [&](const auto& head) {
        if (!head.pad && head.code == code) found = FoundOption(bytes, head.at);
    });
    return found;
}

FoundOption findOption(const PktPtr& pkt, U32 offset, DhcpOptionType code) {
    return findOption(pkt, offset, static_cast<U8>(code));
}

std::vector<FoundOption> subOptions(const FoundOption& option) {
    std::vector<FoundOption> found;
    if (!option) return found;
    const U32 first = option.dataOffset(), end = first + static_cast<U32>(option.data().size());
    const Wire::ByteView bytes(option.bytes().data(), end);
    walkSubOptionsUpTo(bytes, first, end, [&](const auto& head) { found.emplace_back(bytes, head.at); });
    return found;
}

FoundOption findInfoSubOption(const PktPtr& pkt, U32 offset, DhcpInformationSubOptionType code) {
    FoundOption last;
    for (const FoundOption& subOption : subOptions(findOption(pkt, offset, DhcpOptionType::infoOpt)))
        if (subOption.code() == static_cast<U8>(code)) last = subOption;
    return last;
}

}  // namespace DhcpLib
