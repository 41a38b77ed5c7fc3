#pragma once

#include <map>
#include <string>

#include "message/Message.h"

namespace DhcpTool {

/// Numbers of frames by what became of them.
class SnoopCounts {
public:
    void add(const Message& message);

    /// "frames 88: DHCP 33, BOOTP 1, DHCPv6 0, DHCP refused 20, other traffic 34", with the number of messages that
    /// were printed if it is given, then a line for each reason of refusal.
    std::string text(std::optional<U64> printed) const;

private:
    U64 frames_ = 0, dhcp_ = 0, bootp_ = 0, dhcp6_ = 0, refused_ = 0, other_ = 0;
    std::map<std::string_view, U64> refusedFor_;
};

}  // namespace DhcpTool
