#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <vector>

#include "../Message.h"
#include "DhcpLib/Wire.h"
#include "Kcore/FileDescriptor.h"

namespace DhcpBench {

using DhcpLib::Wire::ByteView;

/// Where a datagram goes or came from. A size of 0: where the socket is bound to.
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

    /// Gives the socket a large receive buffer, so that what is measured loses messages and not the measuring.
    explicit BatchSocket(Kcore::FileDescriptor fd);

    int fd() const { return fd_.get(); }
    /// Sends `message` with the next flush(), or once a batch of them waits.
    void send(Octets message, const Peer& to);
    void flush();
    /// Hands over what has arrived, one batch at most: `take(bytes, from)`. Returns the number of messages.
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

/// A socket of that family bound to `own`. Throws std::system_error with `what` if that fails.
Kcore::FileDescriptor boundSocket(int type, int protocol, const Peer& own, const std::string& what);

}  // namespace DhcpBench
