#pragma once

#include <chrono>
#include <variant>

#include "Kcore/FileDescriptor.h"
#include "leasequery/LeaseAnswer.h"

namespace DhcpTool {

/// The client or the address whose lease is queried.
using LeaseSubject = std::variant<Kitnet::EthAddr, Kitnet::IpAddr>;

/// The local address from which datagrams to `peer` are sent. Throws std::system_error if there is no route.
Kitnet::IpAddr localAddressTowards(Kitnet::IpAddr peer);

/// Queries a DHCP server for leases over UDP as a relay agent does (RFC 4388, section 6.3): from the server port of a
/// local address, to which the server replies.
class LeaseQueryClient {
public:
    /// Throws std::system_error if the port of `giaddr` cannot be bound.
    LeaseQueryClient(Kitnet::IpAddr server, Kitnet::IpAddr giaddr);

    /// Sends the query up to 1 + `retries` times and waits `timeout` after each, even if other datagrams arrive
    /// meanwhile. Throws std::system_error.
    std::optional<LeaseAnswer> ask(const LeaseSubject& subject, std::chrono::seconds timeout, unsigned retries);
    /// Number of datagrams that were not a reply to the query or came from another address.
    unsigned long ignored() const { return ignored_; }

private:
    using Clock = std::chrono::steady_clock;

    void send(const Kitnet::Pkt& query);
    std::optional<LeaseAnswer> awaitAnswer(Kcore::U32 xid, Clock::time_point deadline);
    std::optional<LeaseAnswer> takeDatagram(Kcore::U32 xid);

    Kitnet::IpAddr server_, giaddr_;
    Kcore::FileDescriptor socket_;
    unsigned long ignored_ = 0;
};

}  // namespace DhcpTool
