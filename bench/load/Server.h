#pragma once

#include <string>

namespace DhcpBench {

/// Answers every relayed request at that address until SIGTERM. It has no lease database: it computes the offered
/// address from the relay's link address and the client's hardware address or IAID. It returns option 82 or the
/// interface-id only if `echo` is true.
void serve(const std::string& address, bool echo);

}  // namespace DhcpBench
