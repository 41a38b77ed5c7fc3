#pragma once

#include "message/Message.h"

namespace DhcpTool {

/// Reads the DHCPv6 fields of `message` from its packet, as far as they go. Sets `fault` if it is unset and something
/// is wrong.
void readContents6(Message& message);

}  // namespace DhcpTool
