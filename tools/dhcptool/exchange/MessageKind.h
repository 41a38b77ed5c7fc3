#pragma once

#include <string_view>

#include "Kcore/Types.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// The kinds of message that take part in an exchange. A message type that means different things in the two protocols
/// has a kind in each.
enum class MessageKind : U8 {
    bootRequest,  // BOOTP and DHCPv4
    bootReply,
    discover,
    offer,
    request,
    decline,
    ack,
    nak,
    release,
    inform,
    forceRenew,
    leaseQuery,
    leaseUnassigned,
    leaseUnknown,
    leaseActive,
    otherRequest,
    otherReply,
    solicit6,  // DHCPv6
    advertise6,
    request6,
    confirm6,
    renew6,
    rebind6,
    reply6,
    release6,
    decline6,
    reconfigure6,
    infoRequest6,
    leaseQuery6,
    leaseQueryReply6,
    otherRequest6,
    otherReply6,
};

inline constexpr std::size_t messageKindCount = static_cast<std::size_t>(MessageKind::otherReply6) + 1;

/// A set of kinds.
using MessageKinds = U32;

constexpr MessageKinds kinds(auto... kind) {
    return (MessageKinds{0} | ... | (MessageKinds{1} << static_cast<U8>(kind)));
}
constexpr bool contains(MessageKinds set, MessageKind kind) { return (set & kinds(kind)) != 0; }

/// How a kind of message takes part in an exchange.
struct MessageRole {
    MessageKind kind;
    U8 type;                ///< DHCPv4: option 53, 0 without it; DHCPv6: the message type
    std::string_view name;  ///< as printed
    bool dhcp6;
    bool fromServer;
    bool answerDue;          ///< whether a server has to answer it
    MessageKinds answerTo;   ///< the requests that it can answer
    MessageKinds continues;  ///< the messages after which it is part of the same exchange
    bool ends;               ///< an answer after which nothing more is due
};

const MessageRole& roleOf(MessageKind kind);

/// The kind of a message by its type. A type without a row counts as "other".
MessageKind messageKind(bool dhcp6, U8 type, bool fromServer);

}  // namespace DhcpTool
