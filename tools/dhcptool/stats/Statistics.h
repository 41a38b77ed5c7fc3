#pragma once

#include <array>
#include <optional>

#include "exchange/Marks.h"
#include "stats/BoundedTable.h"
#include "stats/Histogram.h"

namespace DhcpTool {

/// What became of exchanges.
struct ExchangeTally {
    U64 exchanges = 0;
    U64 asked = 0;  ///< those in which a server had to answer
    U64 notAnswered = 0;
    U64 problems = 0;  ///< those with a mark

    U64 weight() const { return exchanges; }
    void add(const ExchangeTally& other);
};

/// The answers of a server, and its response times: from the last transmission of the request to the answer, behind a
/// relay agent if the messages were seen there.
struct ServerTally {
    U64 exchanges = 0;
    U64 refusals = 0;   ///< NAKs, and DHCPv6 answers with an error status
    Histogram offers;   ///< OFFER, ADVERTISE
    Histogram replies;  ///< the answers that end an exchange

    U64 weight() const { return exchanges; }
    void add(const ServerTally& other);
};

/// Counts messages and exchanges. Its memory is bounded whatever is sent.
class Statistics {
public:
    void take(const Event& message);
    void take(const Exchange& exchange, const std::vector<Mark>& marks);

    U64 messages() const { return messages_; }
    U64 messagesOf(MessageKind kind) const { return kinds_[static_cast<U8>(kind)]; }
    U64 exchangesWith(MarkKind mark) const { return marks_[static_cast<U8>(mark)]; }
    const ExchangeTally& all() const { return all_; }
    /// Times of the first and the last message; unset without one.
    const std::optional<Nanoseconds>& start() const { return start_; }
    const std::optional<Nanoseconds>& end() const { return end_; }

    const BoundedTable<ServerTally>& servers() const { return servers_; }  ///< by address
    const BoundedTable<ExchangeTally>& vlans() const { return vlans_; }
    const BoundedTable<ExchangeTally>& ports() const { return ports_; }      ///< by circuit-id or interface-id
    const BoundedTable<ExchangeTally>& clients() const { return clients_; }  ///< by MAC address or identifier

private:
    void countServers(const Exchange& exchange);

    U64 messages_ = 0;
    std::array<U64, messageKindCount> kinds_{};
    std::array<U64, markKindCount> marks_{};
    ExchangeTally all_;
    std::optional<Nanoseconds> start_, end_;
    BoundedTable<ServerTally> servers_{64};
    BoundedTable<ExchangeTally> vlans_{1024}, ports_{4096}, clients_{8192};
};

}  // namespace DhcpTool
