#include "view/Line.h"
#include "view/MessageLine.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::DuidFields;

std::string endpoint(const Kitnet::Ip6Addr& ip, const Kitnet::UdpPort& port) {
    return '[' + Kcore::textOf(ip) + "]:" + Kcore::textOf(port);
}

/// "2024-05-01T10:11:12Z" for a time in a DUID, in seconds since 2000.
std::string duidTimeText(U32 seconds) {
    constexpr std::chrono::sys_days start = std::chrono::year{2000} / 1 / 1;
    return timeText(std::chrono::seconds(start.time_since_epoch()) + std::chrono::seconds(seconds)) + 'Z';
}

void addDuid(Line& line, std::string_view name, const std::optional<Message6::Duid>& duid) {
    if (!duid) return;
    if (!duid->fields) {
        line.hexadecimal(name, duid->bytes);
        return;
    }
    const DuidFields& fields = *duid->fields;
    line.field(name, duidTypeName(fields.duidType));
    if (DuidFields::hasLinkLayer(fields.duidType)) line.word(fields.llAddr);
    if (DuidFields::hasTime(fields.duidType)) line.word(duidTimeText(fields.duidTime));
    if (fields.duidType == Dhcp6Const::duidType_uuid) line.word(uuidText(fields.uuid));
    if (fields.duidType == Dhcp6Const::duidType_en) line.word(fields.entno).word(textOrHex(fields.entId));
}

std::string lifetimeText(U32 seconds) {
    constexpr U32 infinity = 0xffffffff;  // RFC 8415, section 7.7
    return seconds == infinity ? "infinite" : std::to_string(seconds) + 's';
}

void addIa(Line& line, const Message6::Ia& ia) {
    line.hexadecimal(ia.kind, DhcpLib::Wire::imageOf(Kitnet::NetU32(ia.iaid)));
    if (ia.t1 != 0) line.field("T1", lifetimeText(ia.t1));
    if (ia.t2 != 0) line.field("T2", lifetimeText(ia.t2));
    for (const Message6::Lease& lease : ia.leases) {
        const std::string bits = lease.prefixBits ? '/' + std::to_string(*lease.prefixBits) : "";
        line.word(Kcore::textOf(lease.address) + bits);
        line.field("preferred", lifetimeText(lease.preferred)).field("valid", lifetimeText(lease.valid));
    }
}

void addInterfaceId(Line& line, const Message6::InterfaceId& id) {
    const DhcpLib::InterfaceIdFields& fields = id.fields;
    if (fields.intfName.empty()) {
        line.field("interface-id", textOrHex(id.bytes));
        return;
    }
    line.bytes("interface-id", fields.intfName).bytes("vrf", fields.vrfName);
    if (fields.srcVtepIp.isUsable()) line.field("vtep", fields.srcVtepIp);
    if (!fields.srcVtepMac.isZero()) line.field("vtep-mac", fields.srcVtepMac);
}

void addRemoteId(Line& line, const Message6::RemoteId& id) {
    const DhcpLib::Dhcp6RemoteIdentifier& fields = id.fields;
    line.field("remote-id enterprise", fields.entno);
    if (fields.l2PortInfoValid())
        line.word(fields.duidllAddr)
            .field("l3-interface", fields.l3IntfId)
            .field("interface", fields.l2IntfId)
            .field("vlan", fields.vlanId);
    else
        line.word(textOrHex(id.bytes.substr(Dhcp6Const::entno_size)));
}

void addContents(Line& line, const Message6& message) {
    addDuid(line, "client-id", message.clientId);
    addDuid(line, "server-id", message.serverId);
    for (const Message6::Ia& ia : message.ias) addIa(line, ia);
    if (message.interfaceId) addInterfaceId(line, *message.interfaceId);
    if (message.remoteId) addRemoteId(line, *message.remoteId);
}

}  // namespace

std::string messageLine(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& p, const std::vector<Message6>& chain) {
    Line line;
    line.start(frame, p.vlanId(), p.tagged());
    for (const Message6& message : chain) {
        line.word(message.type);
        if (!message.isRelay()) line.field("xid", message.xid);
        if (&message == &chain.front())
            line.word(endpoint(p.srcIp6(), p.udpSrcPort())).field(">", endpoint(p.dstIp6(), p.udpDstPort()));
        if (message.isRelay())
            line.field("hops", message.hopCount).field("link", message.linkAddr).field("peer", message.peerAddr);
        addContents(line, message);
    }
    return line.take();
}

}  // namespace DhcpTool
