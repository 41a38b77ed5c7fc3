#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BatchSocket.h"

namespace DhcpBench {

/// The clients of one link, told apart by a number: the first message of each, and what it does with a reply.
class Clients {
public:
    /// A reply to one of the clients, and the request that takes the offer up; without one the client has its lease.
    struct Answer {
        U32 number;
        std::optional<Octets> request;
    };

    virtual ~Clients() = default;
    BatchSocket& socket() { return socket_; }
    /// Where the clients' messages go.
    const Peer& agents() const { return agents_; }
    /// DISCOVER or SOLICIT.
    virtual Octets discover(U32 number) const = 0;
    /// Nothing where the bytes are no reply to a client of this kind.
    virtual std::optional<Answer> answerTo(ByteView bytes) const = 0;

protected:
    Clients(Kcore::FileDescriptor fd, Peer agents) : socket_(std::move(fd)), agents_(agents) {}

private:
    BatchSocket socket_;
    Peer agents_;
};

/// DHCPv4 clients, each with a hardware address of its own; whole frames in and out.
std::unique_ptr<Clients> clients4(const std::string& interface);
/// DHCPv6 clients, each with a DUID of its own, at the interface's link-local address.
std::unique_ptr<Clients> clients6(const std::string& interface);

}  // namespace DhcpBench
