#pragma once

#include <array>

#include "Transaction.h"

namespace DhcpRelay {

/// Counters of one client link, or of the messages from servers that belong to no link.
struct LinkCounters {
    U64 relayed = 0;                   ///< requests that were sent to a server
    U64 delivered = 0;                 ///< replies that were sent to a client
    std::optional<U64> kernelDropped;  ///< no value for the server side
    std::array<U64, reasonCount> byReason{};

    void count(Reason reason) { ++byReason[static_cast<std::size_t>(reason)]; }
};

/// Counters of the requests to one server.
struct ServerCounters {
    IpGenAddr address;
    U64 sent = 0;
    U64 notSent = 0;   ///< the kernel did not send the request
    U64 returned = 0;  ///< an ICMP error came back for a request
};

/// The counters of each client link, followed by those of the server side, and those of each server.
class Counters {
public:
    explicit Counters(const Settings& settings);

    LinkCounters& of(const Port& port) { return rows_[port.isKnown() ? port.link : rows_.size() - 1].second; }
    LinkCounters& ofLink(std::size_t link) { return rows_[link].second; }
    /// Null if the settings have no such server.
    ServerCounters* ofServer(const IpGenAddr& address);
    std::string text() const;
    /// One JSON object on one line.
    std::string json() const;

private:
    std::vector<std::pair<std::string, LinkCounters>> rows_;
    std::vector<ServerCounters> servers_;
};

}  // namespace DhcpRelay
