#pragma once

#include <string>

#include "DhcpLib/DhcpParser.h"
#include "snoop/Arrival.h"
#include "snoop/Message6.h"

namespace DhcpTool {

/// A JSON object about the frame in which `parser` found a message: "frame", for a live frame "interface" and
/// "outgoing", then every attribute of the parser.
std::string messageJson(const Arrival& frame, const DhcpLib::PacketParser& parser);

/// Likewise; then what `chain` says, its messages outermost first: the relay messages as a list of hops, and the
/// message inside, each under the same keys whatever it holds.
std::string messageJson(const Arrival& frame, const DhcpLib::Dhcp6PacketParser& parser,
                        const std::vector<Message6>& chain);

}  // namespace DhcpTool
