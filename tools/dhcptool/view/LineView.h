#pragma once

#include "view/Line.h"
#include "view/View.h"

namespace DhcpTool {

/// One line for a message: frame number, time, VLAN, message type, transaction, client, addresses, then the options
/// that matter, each by its name. Fields that are absent, empty or zero are left out. A relay message of DHCPv6 is
/// followed by the message inside it.
class LineView final : public View {
public:
    explicit LineView(const ViewSettings& settings) : time_(settings.time), coloured_(settings.coloured) {}
    void append(std::string& out, const Message& message) override;

private:
    TimeText time_;
    const bool coloured_;
};

/// The start of a line: frame number, time, interface and direction if they are known, VLAN.
void addStart(Line& line, const Message& message, TimeText& time);
/// The message type, standing out if the message says no.
void addType(Line& line, const Message& message, std::string_view name);
/// "10.0.0.1:67 > 10.0.0.2:67"
void addEndpoints(Line& line, const Headers& headers);
/// The transaction id of a DHCPv4 message: "0x3903f326".
void addXid(Line& line, const Message& message);
/// "[refused: no end option at byte 342]"; nothing for a message without a fault.
void addMark(Line& line, const Message& message);

}  // namespace DhcpTool
