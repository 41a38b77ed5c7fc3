#include "message/Reason.h"

namespace DhcpTool {

namespace {

struct Reason {
    DhcpLib::FrameRejection rejection;
    std::string_view text;
};

using enum DhcpLib::FrameRejection;

constexpr Reason reasons[] = {
    {portNotConfigured, "port is not configured"},
    {shortEthernetHeader, "frame too short for an Ethernet header"},
    {reservedVlan, "tag with the reserved VLAN 4095"},
    {notIp, "VLAN tag that the parser does not take"},
    {shortIpHeader, "frame too short for an IP header"},
    {notUdp, "IPv6 extension header"},
    {shortUdpHeader, "frame too short for a UDP header"},
    {notDhcpPort, "not a DHCP port"},
    {shortMessageHeader, "frame too short for a message header"},
    {noOptionSpace, "no space for options"},
    {noEndOption, "no end option"},
    {relayMessage, "frame too short for a relay header"},
    {unknownMessageType, "unknown message type"},
};

}  // namespace

std::string_view refusalText(const Message& message) {
    if (message.isCutBySnapLength()) return "cut by the snap length of the capture";
    const bool incomplete = message.headers.messageEnd > message.arrival.pkt->bytes();
    if (incomplete && message.headers.firstFragment) return "first IP fragment";
    for (const Reason& reason : reasons)
        if (reason.rejection == message.rejection) return reason.text;
    return Kcore::enumName(message.rejection);
}

}  // namespace DhcpTool
