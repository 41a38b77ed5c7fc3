#pragma once

namespace DhcpRelay {

/// Gives up for good every capability but CAP_NET_RAW and CAP_NET_BIND_SERVICE, and the way to get others from programs
/// that have them. What is not held stays not held. Throws std::system_error if the kernel refuses.
void dropPrivileges();

}  // namespace DhcpRelay
