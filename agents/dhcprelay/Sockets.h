#pragma once

#include <functional>

#include "Kcore/FileDescriptor.h"
#include "Transaction.h"

namespace DhcpRelay {

/// The UDP socket of one protocol on the server side: port 67 or 547 of every address. The kernel gives it replies
/// only: what clients send comes in as frames.
class ServerSocket {
public:
    /// Throws std::system_error, which names the port, if it cannot be opened.
    ServerSocket(Protocol protocol, bool tellsInterface);

    int fd() const { return socket_.get(); }
    /// The next datagram as a transaction of the server side; false where none is waiting.
    bool receive(Transaction& t);
    /// False, with errno, where the kernel does not take it. `ifIndex` is that of the link of a link-local address.
    bool send(std::span<const U8> message, const IpGenAddr& to, U16 port, U32 ifIndex);

private:
    const Protocol protocol_;
    Kcore::FileDescriptor socket_;
};

}  // namespace DhcpRelay
