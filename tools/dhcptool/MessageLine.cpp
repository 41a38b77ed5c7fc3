#include "MessageLine.h"

#include <ctime>

#include "Ascending.h"
#include "Kcore/Text.h"
#include "Printable.h"

namespace DhcpTool {

namespace {

/// "2024-05-01T10:11:12.123456Z"
std::string timeText(CaptureTime time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t wholeSeconds = seconds.count();
    std::tm utc{};
    gmtime_r(&wholeSeconds, &utc);
    char text[40];
    std::string out(text, std::strftime(text, sizeof text, "%FT%T", &utc));
    const std::string micros = std::to_string((time - seconds).count());
    return out + '.' + std::string(6 - micros.size(), '0') + micros + 'Z';
}

class Line {
public:
    template <class T>
    Line& word(const T& value) {
        if (!text_.empty()) text_.push_back(' ');
        Kcore::appendText(text_, value);
        return *this;
    }
    template <class T>
    Line& field(std::string_view name, const T& value) {
        return word(name).word(value);
    }
    Line& bytes(std::string_view name, const Kcore::String& value) {
        return value.empty() ? *this : field(name, textOrHex(value));
    }
    Line& address(std::string_view name, const Kitnet::IpAddr& ip) { return ip.isAny() ? *this : field(name, ip); }
    Line& seconds(std::string_view name, bool there, Kcore::Duration time) {
        return there ? field(name, Kcore::textOf(time) + 's') : *this;
    }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

std::string endpoint(const Kitnet::IpAddr& ip, const Kitnet::UdpPort& port) {
    return Kcore::textOf(ip) + ':' + Kcore::textOf(port);
}

/// Without a type the message's direction is all that is known.
std::string typeText(const DhcpLib::PacketParser& parser) {
    if (parser.dhcpMsgTypeOpt() != 0) return Kcore::textOf(parser.dhcpMsgType());
    return (parser.isDhcp() ? "DHCP " : "BOOTP ") + Kcore::textOf(parser.dhcpOpType());
}

}  // namespace

std::string messageLine(const Frame& frame, const DhcpLib::PacketParser& p) {
    Line line;
    line.word(frame.number).word(timeText(frame.time));
    line.field("vlan", p.vlanId()).word(p.tagged() ? "tagged" : "untagged").word(typeText(p));
    line.field("xid", "0x" + hex({reinterpret_cast<const char*>(p.xid().bytes()), Kitnet::NetU32::wireBytes}));
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
