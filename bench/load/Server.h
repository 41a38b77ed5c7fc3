#pragma once

#include <string>

namespace DhcpBench {

/// Answers every relayed request at that address until SIGTERM, from no lease database: the address it offers comes
/// from the relay's link and the client's hardware address or IAID. It returns option 82 or the interface-id with
/// `echo` only.
void serve(const std::string& address, bool echo);

}  // namespace DhcpBench
