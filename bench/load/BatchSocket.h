#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <vector>

#include "../Message.h"
#include "DhcpLib/Wire.h"
#include "Kcore/FileDescriptor.h"

namespace DhcpBench {

using DhcpLib::Wire::ByteView;

/// Destination or source of a datagram. If `bytes` is 0, sending uses the address that the socket is bound to.
struct Peer {
    sockaddr_storage address{};
    socklen_t bytes = 0;
};

/// `text` is an IPv4 address or an IPv6 address. Throws std::runtime_error for anything else.
Peer peerOf(const std::string& text, U16 port);

/// A socket that sends and receives up to `batch` messages with one system call.
class BatchSocket {
public:
    static constexpr std::size_t batch = 64, largestMessage = 2048;

    /// Gives the socket a large receive buffer, so that messages are lost in the measured program only.
    explicit BatchSocket(Kcore::FileDescriptor fd);

    int fd() const { return fd_.get(); }
    /// Queues `message`. It is sent by the next flush(), or when `batch` messages are queued.
    void send(Octets message, const Peer& to);
    void flush();
    /// Calls `take(bytes, from)` for each message that has arrived, at most `batch`. Returns their number.
    template <class Take>
    std::size_t receive(Take take) {
        const std::size_t count = fill();
        for (std::size_t i = 0; i < count; ++i)
            take(ByteView(&buffer_[i * largestMessage], received_[i].msg_len),
                 Peer{senders_[i], received_[i].msg_hdr.msg_namelen});
        return count;
    }

private:
    std::size_t fill();

    Kcore::FileDescriptor fd_;
    std::vector<Octets> queued_;
    std::vector<Peer> targets_;
    std::vector<U8> buffer_;
    std::vector<sockaddr_storage> senders_;
    std::vector<iovec> places_;
    std::vector<mmsghdr> received_;
};

/// A socket of the address family of `own`, bound to it. Throws std::system_error with `what` if that fails.
Kcore::FileDescriptor boundSocket(int type, int protocol, const Peer& own, const std::string& what);

}  // namespace DhcpBench
