#include "DhcpLib/OptionParser/ServerId.h"

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr char signature[] = "bool DhcpLib::setServerId(const Ptr&, Kitnet::IpAddr)";

void trace(int level, std::string_view text, Kcore::SourceSite caller = Kcore::SourceSite::here()) {
    Tyk::DualTrace(traceHandle(), level, {signature, caller}, "{}{}", std::string_view(signature), text);
}

}  // namespace

bool setServerId(const PktPtr& pkt, Kitnet::IpAddr serverId) {
    trace(TraceLevel::verbose, {});
    const Wire::ByteView bytes(pkt.get());
    RawOption option;
    const AreaState state = walkOptionsArea(bytes, 0, [&](const auto& head) {
        if (head.code == static_cast<U8>(DhcpOptionType::serverIdOpt)) option = RawOption(bytes, head.at);
    });
    traceAreaFailure(state);
    if (state != AreaState::wellFormed) return false;
    // docs/compatibility.md#absent-is-success
    if (!option) return trace(TraceLevel::failure, " DHCP packet has no server identifier"), true;
    if (option.len() == 0) return trace(TraceLevel::failure, " Option 54 server id length is 0"), false;
    if (!bytes.has(option.dataAt(), sizeof serverId))
        return trace(TraceLevel::failure, " Option 54 server id does not fit in the packet"), false;
    Wire::store(*pkt, option.dataAt(), serverId);
    return true;
}

}  // namespace DhcpLib
