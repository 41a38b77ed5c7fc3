#pragma once

#include <string>
#include <vector>

#include "Kcore/Enum.h"
#include "exchange/Exchange.h"

namespace DhcpTool {

/// What is wrong with an exchange, or worth a look; the most serious first.
enum class MarkKind : U8 {
    nak,
    declined,
    status,
    notAnswered,
    notTaken,          ///< offered, but the client requested nothing
    relayInfoLost,     ///< an answer lacks the option 82 or interface-id of its request
    relayInfoChanged,  ///< a relay agent replaced it
    notDelivered,      ///< an answer did not pass the relay agent
    severalServers,
    answeredTwice,
    requestNotSeen,
    retransmitted,
    incomplete,  ///< not all messages are known
};

inline constexpr std::size_t markKindCount = static_cast<std::size_t>(MarkKind::incomplete) + 1;

struct Mark {
    MarkKind kind;
    std::string text;  ///< printable
};

/// The marks of an exchange that has ended, in the order of MarkKind; empty if all went well.
std::vector<Mark> marksOf(const Exchange& exchange);

}  // namespace DhcpTool

/// The names in JSON.
template <>
struct Kcore::EnumTable<DhcpTool::MarkKind> {
    using enum DhcpTool::MarkKind;
    static constexpr std::string_view name = "MarkKind";
    static constexpr EnumMember<DhcpTool::MarkKind> members[] = {
        {nak, "nak"},
        {declined, "declined"},
        {status, "status"},
        {notAnswered, "notAnswered"},
        {notTaken, "notTaken"},
        {relayInfoLost, "relayInfoLost"},
        {relayInfoChanged, "relayInfoChanged"},
        {notDelivered, "notDelivered"},
        {severalServers, "severalServers"},
        {answeredTwice, "answeredTwice"},
        {requestNotSeen, "requestNotSeen"},
        {retransmitted, "retransmitted"},
        {incomplete, "incomplete"},
    };
};
