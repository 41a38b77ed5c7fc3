#include "view/LineView.h"

#include <algorithm>

#include "message/Reason.h"
#include "message/TypeNames.h"
#include "view/OptionText.h"

namespace DhcpTool {

namespace {

/// The options of a line, in its order.
constexpr U8 options4[] = {50, 54, 51, 91, 92, 56, 12, 81, 61, 77, 55, 60, 66, 67};
constexpr U16 options6First[] = {1, 2, 13};
constexpr U16 options6Last[] = {39, 79, 18, 37, 38, 53, 68, 16, 15, 59};

void addOption(Line& line, const OptionInfo* info, const Item& item, const Message& message) {
    appendOptionName(line.gap().text(), info, item.code);
    if (item.data.empty()) return;
    appendValue(line.gap().text(), info, item, message);
}

void addAddress(Line& line, std::string_view name, const Kitnet::IpAddr& ip) {
    if (!ip.isAny()) line.field(name, ip);
}

void addText(Line& line, std::string_view name, std::string_view text) {
    if (!text.empty()) appendQuotedText(line.word(name).gap().text(), text);
}

void addRelayInfo(Line& line, const Message& message) {
    for (const Item& option : message.relayInfo) addOption(line, relayOptionInfo(option.code), option, message);
}

void addOptions4(Line& line, const Message& message) {
    // One pass finds the last option of each code, as the parser does.
    const Item* last[256] = {};
    for (const Item& option : message.options) last[option.code] = &option;
    addRelayInfo(line, message);
    for (const U8 code : options4)
        if (last[code] != nullptr) addOption(line, optionInfo4(code), *last[code], message);
    addText(line, "server-name", message.sname);
    addText(line, "file", message.file);
}

void addMessage4(Line& line, const Message& message) {
    const DhcpLib::DhcpHdr& header = message.header;
    constexpr U32 xidEnd = 8;
    addType(line, message, message.headerBytes != 0 ? message.typeName() : "DHCP");
    if (message.headerBytes >= xidEnd) addXid(line.word("xid"), message);
    if (message.headerBytes == sizeof header) line.field("client", header.chaddr());
    addEndpoints(line, message.headers);
    addAddress(line, "ciaddr", header.ciaddr());
    addAddress(line, "yiaddr", header.yiaddr());
    addAddress(line, "next-server", header.siaddr());
    addAddress(line, "giaddr", header.giaddr());
    if (header.hops() != 0) line.field("hops", header.hops());
    addOptions4(line, message);
}

bool isAssociation(const Item& option) {
    const OptionInfo* const info = optionInfo6(option.code);
    return info != nullptr && (info->layout == Layout::association || info->layout == Layout::associationTa);
}

void addOptions6(Line& line, const Message& message, const Layer6& layer, std::span<const U16> codes) {
    for (const U16 code : codes)
        for (const Item& option : message.optionsOf(layer))
            if (option.code == code) addOption(line, optionInfo6(code), option, message);
}

void addLayer(Line& line, const Message& message, const Layer6& layer) {
    addType(line, message, typeName6(static_cast<U8>(layer.type)));
    if (!layer.isRelay()) line.field("xid", layer.xid);
    if (&layer == &message.layers.front()) addEndpoints(line, message.headers);
    if (layer.isRelay()) line.field("hops", layer.hopCount).field("link", layer.linkAddr).field("peer", layer.peerAddr);
    addOptions6(line, message, layer, options6First);
    for (const Item& option : message.optionsOf(layer))
        if (isAssociation(option)) addOption(line, optionInfo6(option.code), option, message);
    addOptions6(line, message, layer, options6Last);
}

/// Whether the client does not get what it asked for.
bool saysNo(const Message& message) {
    constexpr U8 decline4 = 4, nak = 6, decline6 = 9;
    const U8 type = message.typeNumber();
    if (!message.isDhcp6()) return type == nak || type == decline4;
    bool failed = type == decline6;
    message.forEachStatus([&](const Status6& status) { failed |= status.code != 0; });
    return failed;
}

void addEndpoint(std::string& out, const Kitnet::IpGenAddr& ip, const Kitnet::UdpPort& port) {
    if (ip.isV6()) out.push_back('[');
    ip.appendText(out);
    if (ip.isV6()) out.push_back(']');
    out.push_back(':');
    port.appendText(out);
}

}  // namespace

void addStart(Line& line, const Message& message, TimeText& time) {
    const Arrival& arrival = message.arrival;
    time.append(line.word(arrival.number).gap().text(), arrival);
    if (arrival.live) line.word(arrival.intf);
    if (arrival.ifIndex != 0) line.field("ifindex", arrival.ifIndex);
    if (arrival.outgoing) line.word("out");
    line.field("vlan", message.vlan()).word(message.isTagged() ? "tagged" : "untagged");
}

void addType(Line& line, const Message& message, std::string_view name) {
    line.styled(saysNo(message) ? Style::alarm : Style::emphasis, name);
}

void addEndpoints(Line& line, const Headers& headers) {
    addEndpoint(line.gap().text(), headers.srcIp, headers.ports.src);
    addEndpoint(line.word(">").gap().text(), headers.dstIp, headers.ports.dst);
}

void addXid(Line& line, const Message& message) {
    appendHex(line.gap().text().append("0x"), DhcpLib::Wire::imageOf(message.header.xid()));
}

void addMark(Line& line, const Message& message) {
    const bool refused = message.verdict == Message::Verdict::refused;
    if (!refused && !message.fault) return;
    line.gap().start(Style::alarm);
    std::string& out = line.text();
    out.append(refused ? "[refused: " : "[malformed: ");
    const std::string_view why = refused ? refusalText(message) : std::string_view();
    const bool twice = message.fault && message.fault->what == why;
    if (!twice) out.append(why);
    if (refused && message.fault && !twice) out.append(", ");
    if (message.fault) appendFault(out, *message.fault);
    out.push_back(']');
    line.end(Style::alarm);
}

void LineView::append(std::string& out, const Message& message) {
    Line line(out, coloured_);
    addStart(line, message, time_);
    if (!message.isDhcp6())
        addMessage4(line, message);
    else if (message.layers.empty())
        addEndpoints(line.word("DHCPv6"), message.headers);
    for (const Layer6& layer : message.layers) addLayer(line, message, layer);
    addMark(line, message);
    out.push_back('\n');
}

}  // namespace DhcpTool
