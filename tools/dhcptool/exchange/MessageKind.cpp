#include "exchange/MessageKind.h"

#include <algorithm>
#include <array>

namespace DhcpTool {

namespace {

using enum MessageKind;

constexpr bool v4 = false, v6 = true;
constexpr bool client = false, server = true;
constexpr bool silent = false, asks = true;
constexpr bool last = true;
constexpr U8 noType = 0, anyType = 255;

/// Builds the row of a message that a client or relay agent sends.
constexpr MessageRole asking(MessageKind kind, U8 type, std::string_view name, bool dhcp6, bool answerDue,
                             MessageKinds continues = 0) {
    return {kind, type, name, dhcp6, client, answerDue, 0, continues, false};
}

/// Builds the row of a message that answers those of `answerTo`.
constexpr MessageRole answering(MessageKind kind, U8 type, std::string_view name, bool dhcp6, MessageKinds answerTo,
                                bool ends = last) {
    return {kind, type, name, dhcp6, server, silent, answerTo, 0, ends};
}

constexpr MessageKinds clientRequests6 =
    kinds(solicit6, request6, confirm6, renew6, rebind6, release6, decline6, infoRequest6);

// In the order of MessageKind.
constexpr std::array roles{
    asking(bootRequest, noType, "BOOTREQUEST", v4, asks),
    answering(bootReply, noType, "BOOTREPLY", v4, kinds(bootRequest)),
    asking(discover, 1, "DISCOVER", v4, asks),
    answering(offer, 2, "OFFER", v4, kinds(discover), !last),
    asking(request, 3, "REQUEST", v4, asks, kinds(discover, offer, forceRenew)),
    asking(decline, 4, "DECLINE", v4, silent, kinds(request, ack)),
    answering(ack, 5, "ACK", v4, kinds(request, inform, discover)),
    answering(nak, 6, "NAK", v4, kinds(request)),
    asking(release, 7, "RELEASE", v4, silent),
    asking(inform, 8, "INFORM", v4, asks, kinds(forceRenew)),
    MessageRole{forceRenew, 9, "FORCERENEW", v4, server, asks, 0, 0, false},
    asking(leaseQuery, 10, "LEASEQUERY", v4, asks),
    answering(leaseUnassigned, 11, "LEASEUNASSIGNED", v4, kinds(leaseQuery)),
    answering(leaseUnknown, 12, "LEASEUNKNOWN", v4, kinds(leaseQuery)),
    answering(leaseActive, 13, "LEASEACTIVE", v4, kinds(leaseQuery)),
    asking(otherRequest, anyType, "OTHER-REQUEST", v4, silent),
    answering(otherReply, anyType, "OTHER-REPLY", v4, kinds(otherRequest)),
    asking(solicit6, 1, "SOLICIT", v6, asks),
    answering(advertise6, 2, "ADVERTISE", v6, kinds(solicit6), !last),
    asking(request6, 3, "REQUEST", v6, asks, kinds(solicit6, advertise6)),
    asking(confirm6, 4, "CONFIRM", v6, asks),
    asking(renew6, 5, "RENEW", v6, asks, kinds(reconfigure6)),
    asking(rebind6, 6, "REBIND", v6, asks, kinds(reconfigure6)),
    answering(reply6, 7, "REPLY", v6, clientRequests6),
    asking(release6, 8, "RELEASE", v6, asks),
    asking(decline6, 9, "DECLINE", v6, asks, kinds(reply6)),
    MessageRole{reconfigure6, 10, "RECONFIGURE", v6, server, asks, 0, 0, false},
    asking(infoRequest6, 11, "INFORMATION-REQUEST", v6, asks, kinds(reconfigure6)),
    asking(leaseQuery6, 14, "LEASEQUERY", v6, asks),
    answering(leaseQueryReply6, 15, "LEASEQUERY-REPLY", v6, kinds(leaseQuery6)),
    asking(otherRequest6, anyType, "OTHER-REQUEST", v6, silent),
    answering(otherReply6, anyType, "OTHER-REPLY", v6, kinds(otherRequest6)),
};
constexpr bool inOrder() {
    for (std::size_t at = 0; at < roles.size(); ++at)
        if (roles[at].kind != static_cast<MessageKind>(at)) return false;
    return true;
}
static_assert(inOrder() && roles.size() == messageKindCount && messageKindCount <= 8 * sizeof(MessageKinds));

}  // namespace

const MessageRole& roleOf(MessageKind kind) { return roles[static_cast<U8>(kind)]; }

MessageKind messageKind(bool dhcp6, U8 type, bool fromServer) {
    const auto matches = [&](const MessageRole& role) {
        const bool typed = role.type != anyType && role.type != noType;
        return role.dhcp6 == dhcp6 && role.type == type && (typed || role.fromServer == fromServer);
    };
    const auto row = std::ranges::find_if(roles, matches);
    if (row != roles.end()) return row->kind;
    if (dhcp6) return fromServer ? otherReply6 : otherRequest6;
    return fromServer ? otherReply : otherRequest;
}

}  // namespace DhcpTool
