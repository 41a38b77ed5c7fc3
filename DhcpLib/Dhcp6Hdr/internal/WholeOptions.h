#pragma once

#include "DhcpLib/Dhcp6Hdr/Const.h"
#include "DhcpLib/Dhcp6Hdr/Enums.h"
#include "DhcpLib/PacketView.h"
#include "DhcpLib/Walk.h"

namespace DhcpLib {

/// The packet's bytes in front of `end`; none for a null packet.
inline Wire::ByteView upTo(const PktPtr& pkt, U32 end) {
    const Wire::ByteView bytes(pkt.get());
    return {bytes.data(), std::min(end, bytes.size())};
}

/// Calls `visit(head)` for each whole option from `first` on, until it returns false. Returns whether the
/// options fill `bytes` exactly.
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

inline U32 headerBytes(Dhcp6MsgType type) {
    return isDhcp6RelayMsg(type) ? Dhcp6Const::relayhdr_size : Dhcp6Const::reghdr_size;
}

/// The type of the message at `offset`; 0 if there is no whole header or the type is unknown.
inline Dhcp6MsgType typeOf(Wire::ByteView bytes, U32 offset) {
    const auto type = static_cast<Dhcp6MsgType>(bytes.load<U8>(offset));
    const bool whole = bytes.has(offset, headerBytes(type));
    return whole && !Kcore::enumName(type).empty() ? type : Dhcp6MsgType{};
}

}  // namespace DhcpLib
