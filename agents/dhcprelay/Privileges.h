#pragma once

namespace DhcpRelay {

/// Gives up every capability except CAP_NET_RAW and CAP_NET_BIND_SERVICE, permanently: the process cannot gain any by
/// executing another program either. Does not add capabilities that the process lacks. Throws std::system_error if the
/// kernel refuses.
void dropPrivileges();

}  // namespace DhcpRelay
