#pragma once

#include "Kcore/FileDescriptor.h"
#include "Transaction.h"

namespace DhcpRelay {

/// The UDP socket of one protocol for the server side: port 67 or 547 on every address. A socket filter accepts replies
/// only; the agent receives the clients' messages as frames.
class ServerSocket {
public:
    /// Throws std::system_error, which names the port, if the socket cannot be opened.
    explicit ServerSocket(Protocol protocol);

    int fd() const { return socket_.get(); }
    /// Reads the datagrams that are waiting, but at most replies.size() and at most 32, as transactions of the server
    /// side. Returns their number.
    std::size_t receive(std::span<Transaction> replies);
    /// Returns false and sets errno if the kernel refuses the message. `ifIndex` names the link of a link-local
    /// address.
    bool send(std::span<const U8> message, const IpGenAddr& to, U16 port, U32 ifIndex);
    /// Joins the multicast group of the DHCPv6 relay agents on an interface. Returns false and sets errno on failure;
    /// joining again is none.
    bool joinAllAgents(U32 ifIndex) const;
    /// The next ICMP error that came back for a message. poll reports POLLERR if one is waiting.
    struct Returned {
        IpGenAddr to;  ///< where the message was sent
        int error;     ///< as an errno value
    };
    std::optional<Returned> takeReturned();

private:
    const Protocol protocol_;
    Kcore::FileDescriptor socket_;
};

}  // namespace DhcpRelay
