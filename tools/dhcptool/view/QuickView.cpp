#include "view/QuickView.h"

#include "common/Printable.h"
#include "view/DuidText.h"
#include "view/LineView.h"
#include "view/OptionText.h"

namespace DhcpTool {

namespace {

constexpr std::string_view cut = "...";

void addClient(Line& line, const Message& message) {
    if (const auto mac = message.clientMac())
        line.word(*mac);
    else if (!message.clientId().empty())
        appendDuid(line.gap().text(), message.clientId());
}

/// The addresses that the client asks for or gets.
void addAddresses(Line& line, const Message& message) {
    const DhcpLib::DhcpHdr& header = message.header;
    if (!header.yiaddr().isAny())
        line.word(header.yiaddr());
    else if (const auto requested = message.requestedAddress())
        line.word(*requested);
    else if (!header.ciaddr().isAny())
        line.word(header.ciaddr());
    for (const Lease6& lease : message.leases6) {
        line.word(lease.address);
        if (lease.prefixBits) Kcore::appendText(line.text().append("/"), *lease.prefixBits);
    }
}

void addServer(Line& line, const Message& message) {
    if (const auto server = message.serverId()) line.field("server", *server);
    if (!message.header.giaddr().isAny()) line.field("via", message.header.giaddr());
    if (message.isDhcp6() && message.isRelayed()) line.field("via", message.layers.front().linkAddr);
}

void addReason(Line& line, const Message& message) {
    if (const std::string_view text = message.isDhcp6() ? std::string_view() : message.text(); !text.empty())
        appendQuotedText(line.gap().text(), text);
    message.forEachStatus([&](const Status6& status) {
        if (status.code != 0) appendStatus(line.gap().text(), status);
    });
}

/// Cuts at the last column. A character outside of ASCII counts as two columns, since it may be that wide.
void limit(std::string& line, std::size_t columns) {
    std::size_t used = 0, fits = 0;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const auto byte = static_cast<unsigned char>(line[at]);
        const bool continues = (byte & 0xc0) == 0x80;
        if (!continues) {
            if (used + cut.size() <= columns) fits = at;
            used += byte < 0x80 ? 1 : 2;
        }
    }
    if (used > columns) line.replace(fits, line.npos, cut);
}

}  // namespace

void QuickView::append(std::string& out, const Message& message) {
    line_.clear();
    Line line(line_, false);
    line.word(message.arrival.number);
    const std::size_t timeAt = line.gap().text().size();
    time_.append(line_, message.arrival);
    // The date is left out.
    if (const std::size_t dateEnd = line_.find('T', timeAt); dateEnd != line_.npos)
        line_.erase(timeAt, dateEnd + 1 - timeAt);
    line.field("vlan", message.vlan());
    const std::size_t typeAt = line.gap().text().size();
    if (message.isDhcp6() && message.layers.empty())
        line.word("DHCPv6");
    else
        line.word(message.typeName());
    const std::size_t typeEnd = line_.size();
    addClient(line, message);
    addAddresses(line, message);
    addReason(line, message);
    addServer(line, message);
    addMark(line, message);
    limit(line_, columns);
    Line painted(out, coloured_);
    out.append(line_, 0, typeAt);
    addType(painted, message, std::string_view(line_).substr(typeAt, typeEnd - typeAt));
    out.append(line_, typeEnd).push_back('\n');
}

}  // namespace DhcpTool
