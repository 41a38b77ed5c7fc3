#pragma once

#include <chrono>
#include <map>

#include "Kcore/FileDescriptor.h"
#include "leasequery/LeaseAnswer.h"

namespace DhcpTool {

/// The local address from which datagrams to `peer` are sent. Throws std::system_error if there is no route.
Kitnet::IpAddr localAddressTowards(Kitnet::IpAddr peer);

/// Queries a DHCP server for leases over UDP as a relay agent does (RFC 4388, section 6.3): from the server port of a
/// local address, to which the server replies.
class LeaseQueryClient {
public:
    /// Throws std::system_error if the port of `giaddr` cannot be bound.
    LeaseQueryClient(Kitnet::IpAddr server, Kitnet::IpAddr giaddr);

    /// Sends the query up to 1 + `retries` times. Waits about `timeout` after the first, even if other datagrams
    /// arrive, and about twice as long after each further one, but not longer than 64 seconds or `timeout`. "About" is
    /// up to a tenth more or less, so that hosts that ask together do not stay together. Throws std::system_error.
    std::optional<LeaseAnswer> ask(const LeaseSubject& subject, std::chrono::seconds timeout, unsigned retries);
    /// How many datagrams were no answer to the query, by reason.
    const std::map<std::string_view, unsigned long>& ignored() const { return ignored_; }

private:
    using Clock = std::chrono::steady_clock;

    void send(const Kitnet::Pkt& query);
    std::optional<LeaseAnswer> awaitAnswer(const LeaseSubject& subject, Kcore::U32 xid, Clock::time_point deadline);
    std::optional<LeaseAnswer> takeDatagram(const LeaseSubject& subject, Kcore::U32 xid);

    Kitnet::IpAddr server_, giaddr_;
    Kcore::FileDescriptor socket_;
    std::map<std::string_view, unsigned long> ignored_;
};

}  // namespace DhcpTool
