#include "snoop/Snoop.h"

#include "Kcore/Exception.h"
#include "common/EtherType.h"
#include "snoop/MessageJson.h"
#include "snoop/MessageLine.h"

namespace DhcpTool {

namespace {

bool isIpv6(const Kitnet::Pkt& frame) {
    const DhcpLib::Wire::ByteView bytes(frame);
    return bytes.load<U16>(etherTypeAt(bytes)) == ipv6EtherType;
}

}  // namespace

std::string SnoopCounts::text() const {
    std::string out = "frames " + std::to_string(frames) + ", DHCP " + std::to_string(dhcp) + ", BOOTP " +
                      std::to_string(bootp) + ", DHCPv6 " + std::to_string(dhcp6) + ", rejected " +
                      std::to_string(rejected);
    for (const auto& [why, count] : rejectedFor) out += "\n  " + std::to_string(count) + "  " + why;
    return out;
}

Snooper::Snooper(const SnoopSettings& settings) : settings_(settings), trace_(settings.traceLevel) {
    for (const auto& [intf, port] : settings.ports) {
        const auto config = config_->switchIntfConfigIs(intf);
        config->nativeVlanIs(Bridging::VlanId(port.nativeVlan));
        config->switchportModeIs(port.switchportMode);
    }
}

std::optional<std::string> Snooper::take(const Arrival& frame) {
    ++counts_.frames;
    trace_.frameIs(frame.number);
    try {
        return isIpv6(*frame.pkt) ? take6(frame) : take4(frame);
    } catch (const Kcore::RangeException&) {
        return rejected("Tag with the reserved VLAN 4095");
    }
}

std::optional<std::string> Snooper::take4(const Arrival& frame) {
    if (!settings_.keepState) parser_ = DhcpLib::PacketParser(config_);
    if (!parser_.doParse(frame.pkt, frame.intf, false)) return rejected(trace_.reason());
    ++(parser_.isDhcp() ? counts_.dhcp : counts_.bootp);
    return settings_.json ? messageJson(frame, parser_) : messageLine(frame, parser_);
}

/// The parser refuses relay messages. Whether that is what it refused a fresh one tells: one that keeps state would
/// tell of frames before.
std::optional<std::string> Snooper::take6(const Arrival& frame) {
    if (!settings_.keepState) parser6_ = DhcpLib::Dhcp6PacketParser(config_);
    if (!parser6_.doParseDhcp6(frame.pkt, frame.intf)) {
        const TraceSilence silence;
        DhcpLib::Dhcp6PacketParser fresh(config_);
        fresh.doParseDhcp6(frame.pkt, frame.intf);
        if (!fresh.isDhcp6() || messages6(frame.pkt, fresh).empty()) return rejected(trace_.reason());
    }
    ++counts_.dhcp6;
    const std::vector<Message6> chain = messages6(frame.pkt, parser6_);
    return settings_.json ? messageJson(frame, parser6_, chain) : messageLine(frame, parser6_, chain);
}

std::optional<std::string> Snooper::rejected(const std::string& why) {
    ++counts_.rejected;
    ++counts_.rejectedFor[why];
    return std::nullopt;
}

}  // namespace DhcpTool
