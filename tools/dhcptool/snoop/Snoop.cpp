#include "snoop/Snoop.h"

#include "Kcore/Exception.h"
#include "common/EtherType.h"
#include "view/MessageJson.h"
#include "view/MessageLine.h"

namespace DhcpTool {

namespace {

struct Reason {
    DhcpLib::FrameRejection rejection;
    std::string_view text, text6;  ///< readable reasons, for the DHCPv4 and the DHCPv6 parser
};

std::string_view reasonText(DhcpLib::FrameRejection rejection, bool dhcp6) {
    using enum DhcpLib::FrameRejection;
    static constexpr std::string_view badOptions = "DHCP packet option format is invalid";
    static constexpr Reason reasons[] = {
        {portNotConfigured, "Port is not configured", "Port is not configured"},
        {shortEthernetHeader, "Frame too short for Ethernet header", "Frame too short for Ethernet header"},
        {reservedVlan, "Tag with the reserved VLAN 4095", "Tag with the reserved VLAN 4095"},
        {notIp, "Ethernet payload is not IP", "Ethernet payload is not IPv6"},
        {shortIpHeader, "Frame too short for IPv4 header", "Frame too short for IPv6 header"},
        {notUdp, "IP payload is not UDP", "IP payload is not UDP"},
        {shortUdpHeader, "Frame too short for UDP header", "Frame too short for UDP header"},
        {notDhcpPort, "UDP payload is not DHCP packet", "UDP payload is not DHCP packet"},
        {shortMessageHeader, "Frame too short for BOOTP header", "Can't parse DHCP6 payload"},
        {noOptionSpace, badOptions, ""},
        {noEndOption, badOptions, ""},
        {relayMessage, "", "Frame too short for DHCPv6 relay header"},
        {unknownMessageType, "", "Received Invalid MSG type"},
    };
    for (const Reason& reason : reasons)
        if (reason.rejection == rejection) return dhcp6 ? reason.text6 : reason.text;
    return Kcore::enumName(rejection);
}

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
        return rejected(DhcpLib::FrameRejection::reservedVlan, false);
    }
}

std::optional<std::string> Snooper::take4(const Arrival& frame) {
    if (!settings_.keepState) parser_ = DhcpLib::PacketParser(config_);
    if (!parser_.doParse(frame.pkt, frame.intf, false)) return rejected(parser_.rejection(), false);
    ++(parser_.isDhcp() ? counts_.dhcp : counts_.bootp);
    return settings_.json ? messageJson(frame, parser_) : messageLine(frame, parser_);
}

/// The parser refuses relay messages; they are printed if their header is whole.
std::optional<std::string> Snooper::take6(const Arrival& frame) {
    if (!settings_.keepState) parser6_ = DhcpLib::Dhcp6PacketParser(config_);
    parser6_.doParseDhcp6(frame.pkt, frame.intf);
    const DhcpLib::FrameRejection rejection = parser6_.rejection();
    std::vector<Message6> chain;
    if (rejection == DhcpLib::FrameRejection::none || rejection == DhcpLib::FrameRejection::relayMessage)
        chain = messages6(frame.pkt, parser6_);
    if (chain.empty()) return rejected(rejection, true);
    ++counts_.dhcp6;
    return settings_.json ? messageJson(frame, parser6_, chain) : messageLine(frame, parser6_, chain);
}

std::optional<std::string> Snooper::rejected(DhcpLib::FrameRejection rejection, bool dhcp6) {
    ++counts_.rejected;
    ++counts_.rejectedFor[std::string(reasonText(rejection, dhcp6))];
    return std::nullopt;
}

}  // namespace DhcpTool
