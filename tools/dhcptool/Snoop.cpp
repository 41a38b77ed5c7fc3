#include "Snoop.h"

#include "AttributeJson.h"
#include "Kcore/Exception.h"
#include "Kitnet/Pkt.h"
#include "MessageLine.h"

namespace DhcpTool {

namespace {

std::string messageJson(const Frame& frame, const DhcpLib::PacketParser& parser) {
    Json message{{"frame", frame.number}};
    message.update(jsonOf(parser));
    return message.dump();
}

}  // namespace

std::string SnoopCounts::text() const {
    std::string out = "frames " + std::to_string(frames) + ", DHCP " + std::to_string(dhcp) + ", BOOTP " +
                      std::to_string(bootp) + ", rejected " + std::to_string(rejected);
    for (const auto& [why, count] : rejectedFor) out += "\n  " + std::to_string(count) + "  " + why;
    return out;
}

Snooper::Snooper(const SnoopSettings& settings)
    : settings_(settings), interface_(settings.interface), trace_(settings.traceLevel) {
    const auto port = config_->switchIntfConfigIs(interface_);
    port->nativeVlanIs(Bridging::VlanId(settings.nativeVlan));
    port->switchportModeIs(settings.switchportMode);
}

std::optional<std::string> Snooper::take(const Frame& frame) {
    ++counts_.frames;
    trace_.frameIs(frame.number);
    if (!settings_.keepState) parser_ = DhcpLib::PacketParser(config_);
    if (!parse(frame)) return std::nullopt;
    ++(parser_.isDhcp() ? counts_.dhcp : counts_.bootp);
    return settings_.json ? messageJson(frame, parser_) : messageLine(frame, parser_);
}

bool Snooper::parse(const Frame& frame) {
    try {
        if (parser_.doParse(Kitnet::globalPktManager().newPkt(frame.bytes), interface_, false)) return true;
        reject(trace_.reason());
    } catch (const Kcore::RangeException&) {
        reject("Tag with the reserved VLAN 4095");
    }
    return false;
}

void Snooper::reject(const std::string& why) {
    ++counts_.rejected;
    ++counts_.rejectedFor[why];
}

}  // namespace DhcpTool
