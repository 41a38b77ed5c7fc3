#pragma once

#include <chrono>
#include <variant>

#include "Kcore/FileDescriptor.h"
#include "leasequery/LeaseAnswer.h"

namespace DhcpTool {

/// Whose lease is asked for.
using LeaseSubject = std::variant<Kitnet::EthAddr, Kitnet::IpAddr>;

/// The address of ours from which datagrams go to `peer`. Raises std::system_error where no route leads there.
Kitnet::IpAddr localAddressTowards(Kitnet::IpAddr peer);

/// Asks one DHCP server for leases as a relay agent does: over UDP, from the server port of an address of ours to that
/// of the server, which sends its replies back there (RFC 4388, section 6.3).
class LeaseQueryClient {
public:
    /// Raises std::system_error where the port of `giaddr` cannot be had.
    LeaseQueryClient(Kitnet::IpAddr server, Kitnet::IpAddr giaddr);

    /// Sends the query up to 1 + `retries` times and waits `timeout` after each, however many datagrams come that are
    /// no answer to it. Raises std::system_error.
    std::optional<LeaseAnswer> ask(const LeaseSubject& subject, std::chrono::seconds timeout, unsigned retries);
    /// Datagrams that were no answer, or came from elsewhere than the server's address.
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
