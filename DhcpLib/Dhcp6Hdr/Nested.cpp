#include "DhcpLib/Dhcp6Hdr/Nested.h"

#include "DhcpLib/Dhcp6Hdr/internal/WholeOptions.h"

namespace DhcpLib {

namespace {

constexpr U32 lastPosition = 0xffff;  // of a view; later positions would wrap

std::vector<Dhcp6Option::Ptr> wholeOptions(const PktPtr& pkt, U32 first, U32 end) {
    std::vector<Dhcp6Option::Ptr> options;
    walkWhole(upTo(pkt, std::min(end, lastPosition)), first, [&](const auto& head) {
        options.push_back(dhcp6OptionFactory(pkt, packetPosition(head.at)));
        return true;
    });
    return options;
}

/// Replaces `message` by the one in its relay message option. Returns false and changes nothing if it has none.
bool findRelayed(const PktPtr& pkt, Dhcp6MessagePlace& message) {
    const Wire::ByteView bytes = upTo(pkt, std::min(message.end, lastPosition));
    const Dhcp6MsgType type = typeOf(bytes, message.offset);
    if (!isDhcp6RelayMsg(type)) return false;
    bool found = false;
    walkWhole(bytes, message.offset + headerBytes(type), [&](const auto& head) {
        found = head.code == static_cast<U16>(Dhcp6OptionType::relayMsg);
        if (found) message = {packetPosition(head.dataAt()), head.dataAt() + head.len};
        return !found;
    });
    return found;
}

}  // namespace

std::vector<Dhcp6Option::Ptr> dhcp6MessageOptions(const PktPtr& pkt, const Dhcp6MessagePlace& message) {
    const Dhcp6MsgType type = typeOf(upTo(pkt, message.end), message.offset);
    if (type == Dhcp6MsgType{}) return {};
    return wholeOptions(pkt, message.offset + headerBytes(type), message.end);
}

std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6OptionPtr& opt, U8 first) {
    if (!opt) return {};
    const U32 start = opt->offset();
    return wholeOptions(opt->pkt(), start + first, start + Dhcp6Const::optdata_offset + opt->len());
}

std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6Ia& ia) {
    return dhcp6NestedOptions(ia.opt(), Dhcp6Const::ianadata_offset);
}

std::vector<Dhcp6MessagePlace> dhcp6RelayChain(const PktPtr& pkt, const Dhcp6MessagePlace& outermost) {
    std::vector<Dhcp6MessagePlace> chain;
    Dhcp6MessagePlace message = outermost;
    do {
        if (typeOf(upTo(pkt, message.end), message.offset) == Dhcp6MsgType{}) break;
        chain.push_back(message);
    } while (chain.size() <= Constants::dhcp6HopCountLimit && findRelayed(pkt, message));
    return chain;
}

}  // namespace DhcpLib
