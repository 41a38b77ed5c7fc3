#pragma once

#include <array>

#include "Transaction.h"

namespace DhcpRelay {

/// Counters of one client link, or of the messages from servers that belong to no link.
struct LinkCounters {
    U64 relayed = 0;    ///< requests that were sent to a server
    U64 delivered = 0;  ///< replies that were sent to a client
    U64 kernelDropped = 0;
    std::array<U64, reasonCount> byReason{};

    void count(Reason reason) { ++byReason[static_cast<std::size_t>(reason)]; }
};

/// The counters of each client link, followed by those of the server side.
class Counters {
public:
    explicit Counters(const std::vector<ClientLink>& links);

    LinkCounters& of(const Port& port) { return rows_[port.isKnown() ? port.link : rows_.size() - 1].second; }
    LinkCounters& ofLink(std::size_t link) { return rows_[link].second; }
    std::string text() const;
    /// One JSON object on one line.
    std::string json() const;

private:
    std::vector<std::pair<std::string, LinkCounters>> rows_;
};

}  // namespace DhcpRelay
