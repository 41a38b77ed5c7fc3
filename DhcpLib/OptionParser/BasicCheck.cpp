#include "DhcpLib/OptionParser/BasicCheck.h"

#include "DhcpLib/Dhcp6Hdr/internal/WholeOptions.h"
#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

bool dhcpOptionBasicCheck(const PktPtr& pkt, U32 offset) {
    const AreaState state = walkOptionsArea(Wire::ByteView(pkt.get()), offset, [](const auto&) {});
    traceAreaFailure(state);
    return state == AreaState::wellFormed;
}

bool dhcp6OptionBasicCheck(const PktPtr& pkt, U32 offset) {
    const Wire::ByteView bytes(pkt.get());
    const Dhcp6MsgType type = typeOf(bytes, offset);
    if (type != Dhcp6MsgType{} && walkWhole(bytes, offset + headerBytes(type), [](const auto&) { return true; }))
        return true;
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {},
                   "dhcp6OptionBasicCheck no DHCPv6 message whose options end with the packet");
    return false;
}

}  // namespace DhcpLib
