#pragma once

#include <string>

#include "DhcpLib/DhcpParser.h"
#include "capture/Arrival.h"
#include "message/Message6.h"

namespace DhcpTool {

/// A JSON object for the frame that `parser` has parsed: "frame", for a live frame "interface" and "outgoing", then
/// every attribute of the parser.
std::string messageJson(const Arrival& frame, const DhcpLib::PacketParser& parser);

/// The same, then the messages of `chain`, outermost first: relay messages as a list of hops, and the message inside.
/// The keys are the same for all messages.
std::string messageJson(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& parser,
                        const std::vector<Message6>& chain);

}  // namespace DhcpTool
