#pragma once

#include <string>

#include "exchange/Marks.h"

namespace DhcpTool {

/// Appends the line of an exchange to its time: client, host name, VLAN, port, the messages with the times between
/// them, addresses, lease, server, relay agent with its delays (">" to the server, "<" to the client), then "!" and the
/// marks. A time after an answer is the time since its request; one after a request is the time since the answer
/// before it.
void appendExchange(std::string& out, const Exchange& exchange, const std::vector<Mark>& marks, bool coloured);

}  // namespace DhcpTool
