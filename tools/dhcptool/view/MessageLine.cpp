#include "view/MessageLine.h"

#include "common/Ascending.h"
#include "view/Line.h"

namespace DhcpTool {

namespace {

std::string endpoint(const Kitnet::IpAddr& ip, const Kitnet::UdpPort& port) {
    return Kcore::textOf(ip) + ':' + Kcore::textOf(port);
}

/// The message type, or the direction if the message has no type.
std::string typeText(const DhcpLib::PacketParser& parser) {
    if (parser.dhcpMsgTypeOpt() != 0) return Kcore::textOf(parser.dhcpMsgType());
    return (parser.isDhcp() ? "DHCP " : "BOOTP ") + Kcore::textOf(parser.dhcpOpType());
}

}  // namespace

std::string messageLine(const Arrival& frame, const DhcpLib::PacketParser& p) {
    Line line;
    line.start(frame, p.vlanId(), p.tagged()).word(typeText(p));
    line.hexadecimal("xid", DhcpLib::Wire::imageOf(p.xid()));
    line.field("client", p.chaddr()).word(endpoint(p.srcIp(), p.udpSrcPort()));
    line.field(">", endpoint(p.dstIp(), p.udpDstPort()));
    line.address("ciaddr", p.ciaddr()).address("yiaddr", p.yiaddr()).address("giaddr", p.giaddr());
    line.bytes("circuit-id", p.circuitId()).bytes("remote-id", p.remoteId());
    if (p.serverIdExist()) line.field("server-id", p.serverId());
    line.seconds("lease-time", p.leaseTimeExist(), p.leaseTime());
    line.seconds("last-transaction", p.lastTransactionTimeExist(), p.lastTransactionTime());
    if (!p.associatedIps().empty()) line.field("associated", ascending(p.associatedIps()));
    line.bytes("hostname", p.hostname());
    if (!p.paramReqList().empty()) line.field("params", p.paramReqList());
    return line.bytes("vendor-class", p.vendorClassId()).take();
}

}  // namespace DhcpTool
