// installed VERSION NUMBER: succeeds if the library's headers and its code both have this version and enterprise
// number, and if the library finds its configuration folder by itself.

#include <iostream>
#include <string>
#include <string_view>

#include "DhcpLib/Constants.h"
#include "DhcpLib/OptionParser/VendorSubOption.h"
#include "DhcpLib/Version.h"
#include "Tyk/Toggle.h"

namespace {

bool check(std::string_view what, bool holds) {
    if (!holds) std::cerr << what << '\n';
    return holds;
}

}  // namespace

int main(int, char** argv) {
    const std::string_view version = argv[1];
    const std::string_view number = argv[2];
    const bool passed[] = {
        check("the headers have another version", DhcpLib::version == version),
        check("the headers have another enterprise number", std::to_string(DhcpLib::Constants::quorvaEntNum) == number),
        check("the library writes another enterprise number", DhcpLib::quorvaEntNumText().view() == number),
        check("the library did not find DhcpLib.json",
              Tyk::getToggleState("DhcpRelayTunnelEncapReplies", "DhcpLib.json", false)),
    };
    for (const bool each : passed) {
        if (!each) return 1;
    }
    return 0;
}
