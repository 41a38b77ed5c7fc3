#include "DhcpLib/Toggle.h"

#include "Tyk/Toggle.h"

namespace DhcpLib {

bool dhcpRelayTunnelEncapReplies() {
    static const bool on = Tyk::getToggleState("DhcpRelayTunnelEncapReplies", "DhcpLib.json", true);
    return on;
}

}  // namespace DhcpLib
