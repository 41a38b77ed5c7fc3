#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BatchSocket.h"

namespace DhcpBench {

/// The clients of one link, each with a number. Builds their messages and evaluates the replies.
class Clients {
public:
    /// The client that a reply is for, and the request that follows an offer; no request if the client has its lease.
    struct Answer {
        U32 number;
        std::optional<Octets> request;
    };

    virtual ~Clients() = default;
    BatchSocket& socket() { return socket_; }
    /// Destination of the clients' messages.
    const Peer& agents() const { return agents_; }
    /// The first message of a client: DISCOVER or SOLICIT.
    virtual Octets discover(U32 number) const = 0;
    /// Empty if `bytes` is not a reply to one of these clients.
    virtual std::optional<Answer> answerTo(ByteView bytes) const = 0;

protected:
    Clients(Kcore::FileDescriptor fd, Peer agents) : socket_(std::move(fd)), agents_(agents) {}

private:
    BatchSocket socket_;
    Peer agents_;
};

/// DHCPv4 clients, each with its own hardware address. Messages are whole Ethernet frames.
std::unique_ptr<Clients> clients4(const std::string& interface);
/// DHCPv6 clients, each with its own DUID. All use the interface's link-local address.
std::unique_ptr<Clients> clients6(const std::string& interface);

}  // namespace DhcpBench
