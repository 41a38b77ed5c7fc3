#include "Sockets.h"

#include <linux/errqueue.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "DhcpLib/Constants.h"
#include "Links.h"

namespace DhcpRelay {

namespace {

using DhcpLib::Constants;

[[noreturn]] void raise(const std::string& what) { throw std::system_error(errno, std::system_category(), what); }

void optionIs(int fd, int level, int option, int value, const char* what) {
    if (::setsockopt(fd, level, option, &value, sizeof value) != 0) raise(what);
}

union SocketAddress {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
};

socklen_t toSocketAddress(SocketAddress& out, const IpGenAddr& address, U16 port, U32 ifIndex) {
    out = {};
    if (address.isV4()) {
        out.v4.sin_family = AF_INET;
        out.v4.sin_port = htons(port);
        std::memcpy(&out.v4.sin_addr, address.v4Addr().bytes(), sizeof(IpAddr));
        return sizeof out.v4;
    }
    out.v6.sin6_family = AF_INET6;
    out.v6.sin6_port = htons(port);
    std::memcpy(&out.v6.sin6_addr, address.v6Addr().bytes(), sizeof(Ip6Addr));
    if (isLinkLocal(address.v6Addr())) out.v6.sin6_scope_id = ifIndex;
    return sizeof out.v6;
}

IpGenAddr toAddress(const SocketAddress& address) {
    if (address.any.sa_family == AF_INET6)
        return Ip6Addr::fromBytes(reinterpret_cast<const U8*>(&address.v6.sin6_addr));
    return IpAddr::fromBytes(reinterpret_cast<const U8*>(&address.v4.sin_addr));
}

/// Makes the socket accept only datagrams whose message starts with `first`. The filter sees the UDP header as well.
void attachFilter(int fd, U8 first) {
    constexpr U32 udpBytes = 8;
    sock_filter instructions[] = {
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, udpBytes),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, first, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, 0xffffffff),
        BPF_STMT(BPF_RET | BPF_K, 0),
    };
    const sock_fprog program{static_cast<unsigned short>(std::size(instructions)), instructions};
    if (::setsockopt(fd, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0) raise("socket filter");
}

/// The interface that received a datagram.
U32 receivingInterface(msghdr& message) {
    for (cmsghdr* c = CMSG_FIRSTHDR(&message); c != nullptr; c = CMSG_NXTHDR(&message, c)) {
        if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_PKTINFO) {
            in_pktinfo info;
            std::memcpy(&info, CMSG_DATA(c), sizeof info);
            return static_cast<U32>(info.ipi_ifindex);
        }
        if (c->cmsg_level == IPPROTO_IPV6 && c->cmsg_type == IPV6_PKTINFO) {
            in6_pktinfo info;
            std::memcpy(&info, CMSG_DATA(c), sizeof info);
            return info.ipi6_ifindex;
        }
    }
    return 0;
}

/// Several datagrams that are read with one system call. Of its 2 MiB of address space it only touches as much as the
/// datagrams need.
class Batch {
public:
    Batch() : bytes_(new U8[most * slotBytes]) {
        for (std::size_t i = 0; i < most; ++i) {
            places_[i] = {bytes_.get() + i * slotBytes, largestDatagram};
            msghdr& message = messages_[i].msg_hdr;
            message.msg_iov = &places_[i];
            message.msg_iovlen = 1;
            message.msg_name = &beside_[i].from;
            message.msg_control = beside_[i].control.data();
        }
    }

    /// Returns as recvmmsg(2).
    int read(int fd, std::size_t limit) {
        for (std::size_t i = 0; i < most; ++i) {  // the last call has set the sizes to what was received
            messages_[i].msg_hdr.msg_namelen = sizeof beside_[i].from;
            messages_[i].msg_hdr.msg_controllen = sizeof beside_[i].control;
        }
        return ::recvmmsg(fd, messages_.data(), static_cast<unsigned>(std::min(limit, most)), MSG_DONTWAIT, nullptr);
    }

    void take(std::size_t i, Transaction& t) {
        t.pkt = Kitnet::globalPktManager().newPkt({bytes_.get() + i * slotBytes, messages_[i].msg_len});
        t.src = toAddress(beside_[i].from);
        t.ifIndex = receivingInterface(messages_[i].msg_hdr);
    }

private:
    static constexpr std::size_t most = 32, largestDatagram = 65535;
    // A multiple of the page size would make the beginnings of all datagrams compete for the same lines of the cache.
    static constexpr std::size_t slotBytes = largestDatagram + 513;

    struct Beside {
        SocketAddress from;
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in6_pktinfo))> control;
    };
    std::unique_ptr<U8[]> bytes_;
    std::array<mmsghdr, most> messages_{};
    std::array<iovec, most> places_{};
    std::array<Beside, most> beside_{};
};

}  // namespace

ServerSocket::ServerSocket(Protocol protocol)
    : protocol_(protocol),
      socket_(
          ::socket(protocol == Protocol::dhcp4 ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    const bool isV4 = protocol == Protocol::dhcp4;
    const U16 port = isV4 ? Constants::dhcpServerPort : Constants::dhcp6ServerPort;
    const std::string name = "UDP port " + std::to_string(port);
    if (!socket_) raise(name);
    constexpr U8 bootReply = 2, relayReply = 13;
    constexpr int receiveBuffer = 1 << 20;
    attachFilter(fd(), isV4 ? bootReply : relayReply);
    optionIs(fd(), SOL_SOCKET, SO_RCVBUF, receiveBuffer, "receive buffer");
    if (!isV4) optionIs(fd(), IPPROTO_IPV6, IPV6_V6ONLY, 1, "IPv6 only");
    optionIs(fd(), isV4 ? IPPROTO_IP : IPPROTO_IPV6, isV4 ? IP_RECVERR : IPV6_RECVERR, 1, "ICMP errors");
    optionIs(fd(), isV4 ? IPPROTO_IP : IPPROTO_IPV6, isV4 ? IP_PKTINFO : IPV6_RECVPKTINFO, 1, "packet info");
    SocketAddress address;
    const IpGenAddr any = isV4 ? IpGenAddr(IpAddr()) : IpGenAddr(Ip6Addr());
    if (::bind(fd(), &address.any, toSocketAddress(address, any, port, 0)) != 0)
        raise(name + (errno == EACCES ? ", CAP_NET_BIND_SERVICE is missing" : ""));
}

std::size_t ServerSocket::receive(std::span<Transaction> replies) {
    static Batch batch;
    int count = batch.read(fd(), replies.size());
    // An ICMP error for an earlier message makes one call fail. The datagrams stay in the socket.
    if (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK) count = batch.read(fd(), replies.size());
    for (int i = 0; i < count; ++i) {
        Transaction& t = replies[static_cast<std::size_t>(i)] = {};
        t.protocol = protocol_;
        t.side = Side::server;
        batch.take(static_cast<std::size_t>(i), t);
    }
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

bool ServerSocket::send(std::span<const U8> message, const IpGenAddr& to, U16 port, U32 ifIndex) {
    SocketAddress address;
    const socklen_t size = toSocketAddress(address, to, port, ifIndex);
    const auto trySend = [&] {
        return ::sendto(fd(), message.data(), message.size(), MSG_DONTWAIT, &address.any, size) >= 0;
    };
    // The first call fails, too, if an ICMP error for an earlier message has arrived.
    if (trySend()) return true;
    return trySend();
}

bool ServerSocket::joinAllAgents(U32 ifIndex) const {
    ipv6_mreq group{};
    std::memcpy(&group.ipv6mr_multiaddr, allAgents.bytes(), sizeof allAgents);
    group.ipv6mr_interface = ifIndex;
    return ::setsockopt(fd(), IPPROTO_IPV6, IPV6_JOIN_GROUP, &group, sizeof group) == 0 || errno == EADDRINUSE;
}

std::optional<ServerSocket::Returned> ServerSocket::takeReturned() {
    SocketAddress to{};
    alignas(cmsghdr) std::array<char, 512> control;
    msghdr message{};
    message.msg_name = &to;
    message.msg_namelen = sizeof to;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    if (::recvmsg(fd(), &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) return std::nullopt;
    Returned returned{toAddress(to), 0};
    for (cmsghdr* c = CMSG_FIRSTHDR(&message); c != nullptr; c = CMSG_NXTHDR(&message, c)) {
        if (!(c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_RECVERR) &&
            !(c->cmsg_level == IPPROTO_IPV6 && c->cmsg_type == IPV6_RECVERR))
            continue;
        sock_extended_err error;
        std::memcpy(&error, CMSG_DATA(c), sizeof error);
        returned.error = static_cast<int>(error.ee_errno);
    }
    return returned;
}

}  // namespace DhcpRelay
