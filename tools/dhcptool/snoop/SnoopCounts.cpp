#include "snoop/SnoopCounts.h"

#include "message/Reason.h"

namespace DhcpTool {

void SnoopCounts::add(const Message& message) {
    ++frames_;
    switch (message.verdict) {
        case Message::Verdict::other:
            ++other_;
            break;
        case Message::Verdict::refused:
            ++refused_;
            ++refusedFor_[refusalText(message)];
            break;
        case Message::Verdict::accepted:
            ++(message.isDhcp6() ? dhcp6_ : message.isBootp ? bootp_ : dhcp_);
            break;
    }
}

std::string SnoopCounts::text(std::optional<U64> printed) const {
    std::string out = "frames " + std::to_string(frames_) + ": DHCP " + std::to_string(dhcp_) + ", BOOTP " +
                      std::to_string(bootp_) + ", DHCPv6 " + std::to_string(dhcp6_) + ", DHCP refused " +
                      std::to_string(refused_) + ", other traffic " + std::to_string(other_);
    if (printed) out += "; printed " + std::to_string(*printed);
    for (const auto& [why, count] : refusedFor_) out += "\n  " + std::to_string(count) + "  " + std::string(why);
    return out;
}

}  // namespace DhcpTool
