#include "BatchSocket.h"

#include <arpa/inet.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace DhcpBench {

Peer peerOf(const std::string& text, U16 port) {
    Peer peer;
    auto* v4 = reinterpret_cast<sockaddr_in*>(&peer.address);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&peer.address);
    if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        peer.bytes = sizeof *v4;
    } else if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        peer.bytes = sizeof *v6;
    } else {
        throw std::runtime_error("no address: " + text);
    }
    return peer;
}

Kcore::FileDescriptor boundSocket(int type, int protocol, const Peer& own, const std::string& what) {
    Kcore::FileDescriptor fd(socket(own.address.ss_family, type | SOCK_CLOEXEC, protocol));
    if (!fd || bind(fd.get(), reinterpret_cast<const sockaddr*>(&own.address), own.bytes) < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return fd;
}

BatchSocket::BatchSocket(Kcore::FileDescriptor fd)
    : fd_(std::move(fd)), buffer_(batch * largestMessage), senders_(batch), places_(batch), received_(batch) {
    const int bytes = 16 << 20;
    setsockopt(fd_.get(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes);
    for (std::size_t i = 0; i < batch; ++i) {
        places_[i] = {&buffer_[i * largestMessage], largestMessage};
        received_[i].msg_hdr.msg_iov = &places_[i];
        received_[i].msg_hdr.msg_iovlen = 1;
        received_[i].msg_hdr.msg_name = &senders_[i];
    }
}

void BatchSocket::send(Octets message, const Peer& to) {
    queued_.push_back(std::move(message));
    targets_.push_back(to);
    if (queued_.size() == batch) flush();
}

void BatchSocket::flush() {
    std::vector<iovec> data(queued_.size());
    std::vector<mmsghdr> messages(queued_.size());
    for (std::size_t i = 0; i < queued_.size(); ++i) {
        data[i] = {queued_[i].data(), queued_[i].size()};
        messages[i].msg_hdr.msg_iov = &data[i];
        messages[i].msg_hdr.msg_iovlen = 1;
        messages[i].msg_hdr.msg_name = targets_[i].bytes != 0 ? &targets_[i].address : nullptr;
        messages[i].msg_hdr.msg_namelen = targets_[i].bytes;
    }
    for (std::size_t sent = 0; sent < messages.size();) {
        const int n = sendmmsg(fd_.get(), &messages[sent], static_cast<unsigned>(messages.size() - sent), 0);
        sent += n > 0 ? static_cast<std::size_t>(n) : 1;  // a message that cannot be sent counts as lost
    }
    queued_.clear();
    targets_.clear();
}

std::size_t BatchSocket::fill() {
    for (mmsghdr& m : received_) m.msg_hdr.msg_namelen = sizeof(sockaddr_storage);
    const int n = recvmmsg(fd_.get(), received_.data(), batch, MSG_DONTWAIT, nullptr);
    return n > 0 ? static_cast<std::size_t>(n) : 0;
}

}  // namespace DhcpBench
