// Succeeds if the headers carry the package's version and the library finds its configuration folder by itself.

#include <string_view>

#include "DhcpLib/Version.h"
#include "Tyk/Toggle.h"

int main() {
    const bool toggle = Tyk::getToggleState("DhcpRelayTunnelEncapReplies", "DhcpLib.json", false);
    return toggle && std::string_view(DhcpLib::version) == EXPECTED_VERSION ? 0 : 1;
}
