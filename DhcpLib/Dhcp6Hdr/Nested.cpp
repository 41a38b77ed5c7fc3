#include "DhcpLib/Dhcp6Hdr/Nested.h"

#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr U32 lastPosition = 0xffff;  // of a view; a higher position would wrap

/// Calls `visit(head)` for each whole option from `first` on, until it returns false. Returns whether the options fill
/// `bytes` exactly.
template <class Visit>
bool walkWhole(Wire::ByteView bytes, U32 first, Visit visit) {
    U32 reached = first;
    const auto inside = [&](U32 at) { return at < bytes.size(); };
    walkItems<Option6Shape, U32>(bytes, 0, first, inside, [&](const auto& head, U32 next) {
        if (head.code == 0 || next > bytes.size()) return false;
        reached = next;
        return visit(head);
    });
    return reached == bytes.size();
}

Wire::ByteView upTo(const Kitnet::Pkt& pkt, U32 end) { return {pkt.data(), std::min(end, pkt.bytes())}; }

std::vector<Dhcp6Option::Ptr> wholeOptions(const PktPtr& pkt, U32 first, U32 end) {
    std::vector<Dhcp6Option::Ptr> options;
    walkWhole(upTo(*pkt, std::min(end, lastPosition)), first, [&](const auto& head) {
        options.push_back(dhcp6OptionFactory(pkt, packetPosition(head.at)));
        return true;
    });
    return options;
}

U32 headerBytes(Dhcp6MsgType type) {
    return isDhcp6RelayMsg(type) ? Dhcp6Const::relayhdr_size : Dhcp6Const::reghdr_size;
}

/// The type of the message at `offset`; 0 if it is unknown or its header is not whole.
Dhcp6MsgType typeOf(Wire::ByteView bytes, U32 offset) {
    const auto type = static_cast<Dhcp6MsgType>(bytes.load<U8>(offset));
    const bool whole = bytes.has(offset, headerBytes(type));
    return whole && !Kcore::enumName(type).empty() ? type : Dhcp6MsgType{};
}

/// Replaces `message` by the message in its relay message option. Returns false and changes nothing if there is none.
bool findRelayed(const Kitnet::Pkt& pkt, Dhcp6MessagePlace& message) {
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
    const Dhcp6MsgType type = typeOf(upTo(*pkt, message.end), message.offset);
    if (type == Dhcp6MsgType{}) return {};
    return wholeOptions(pkt, message.offset + headerBytes(type), message.end);
}

std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6OptionPtr& opt, U8 first) {
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
        if (typeOf(upTo(*pkt, message.end), message.offset) == Dhcp6MsgType{}) break;
        chain.push_back(message);
    } while (chain.size() <= Constants::dhcp6HopCountLimit && findRelayed(*pkt, message));
    return chain;
}

bool dhcp6OptionBasicCheck(const PktPtr& pkt, U32 offset) {
    const Wire::ByteView bytes(*pkt);
    const Dhcp6MsgType type = typeOf(bytes, offset);
    if (type != Dhcp6MsgType{} && walkWhole(bytes, offset + headerBytes(type), [](const auto&) { return true; }))
        return true;
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {},
                   "dhcp6OptionBasicCheck no DHCPv6 message whose options end with the packet");
    return false;
}

}  // namespace DhcpLib
