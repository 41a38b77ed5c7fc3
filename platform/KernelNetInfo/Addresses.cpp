#include "KernelNetInfo/Addresses.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace KernelNetInfo {

namespace {

const Kcore::ModuleTypes<Addresses> registration{"KernelNetInfo/Addresses"};

constexpr std::size_t largestRead = 32768;  // the kernel sends no longer message to a reader with a buffer of this size

[[noreturn]] void raise(const char* what, int error = errno) {
    throw std::system_error(error, std::system_category(), what);
}

}  // namespace

Addresses::Addresses() : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
    if (!socket_) raise("KernelNetInfo::Addresses: rtnetlink socket");
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
    if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        raise("KernelNetInfo::Addresses: rtnetlink address notifications");
    listAnew();
    // The kernel produces the list while it is read, so this reads all of it.
    handleReadable();
}

Addresses::~Addresses() = default;
const Kcore::TypeData& Addresses::typeData() const { return Kcore::typeDataOf<Addresses>(); }

void Addresses::handleReadable() {
    for (;;) {
        while (receive()) {
        }
        if (!lost_ || listing_) break;
        listAnew();
    }
    if (std::exchange(changed_, false)) observers_.notify();
}

/// Returns false if there is nothing to read.
bool Addresses::receive() {
    alignas(nlmsghdr) U8 bytes[largestRead];
    sockaddr_nl sender{};
    iovec part{bytes, sizeof bytes};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    const ssize_t size = ::recvmsg(socket_.get(), &message, 0);
    if (size < 0) {
        if (errno == ENOBUFS) lost_ = true;
        return errno == ENOBUFS || errno == EINTR;
    }
    if ((message.msg_flags & MSG_TRUNC) != 0) lost_ = true;
    if (sender.nl_pid == 0) handleMessages(bytes, static_cast<std::size_t>(size));  // other senders are not the kernel
    return size != 0;
}

void Addresses::handleMessages(const U8* bytes, std::size_t size) {
    auto left = static_cast<U32>(size);
    for (auto* at = reinterpret_cast<const nlmsghdr*>(bytes); NLMSG_OK(at, left); at = NLMSG_NEXT(at, left)) {
        if ((at->nlmsg_flags & NLM_F_DUMP_INTR) != 0) lost_ = true;
        if (at->nlmsg_type == NLMSG_ERROR)
            raise("KernelNetInfo::Addresses: list of the addresses",
                  -static_cast<const nlmsgerr*>(NLMSG_DATA(at))->error);
        if (at->nlmsg_type == NLMSG_DONE)
            listing_ = false;
        else if (at->nlmsg_type == RTM_NEWADDR || at->nlmsg_type == RTM_DELADDR)
            handleAddress(*at);
    }
}

void Addresses::handleAddress(const nlmsghdr& header) {
    if (header.nlmsg_len < NLMSG_LENGTH(sizeof(ifaddrmsg))) return;
    const auto& info = *static_cast<const ifaddrmsg*>(NLMSG_DATA(&header));
    HostAddress found{info.ifa_index, {}, info.ifa_prefixlen};
    U32 flags = info.ifa_flags;
    auto size = static_cast<int>(IFA_PAYLOAD(&header));
    for (const rtattr* at = IFA_RTA(&info); RTA_OK(at, size); at = RTA_NEXT(at, size)) {
        const auto* const data = static_cast<const U8*>(RTA_DATA(at));
        const std::size_t bytes = RTA_PAYLOAD(at);
        // On a point-to-point device IFA_ADDRESS is the IPv4 address of the other end.
        if (info.ifa_family == AF_INET && at->rta_type == IFA_LOCAL && bytes == sizeof(Kitnet::IpAddr))
            found.address = Kitnet::IpAddr::fromBytes(data);
        if (info.ifa_family == AF_INET6 && at->rta_type == IFA_ADDRESS && bytes == sizeof(Kitnet::Ip6Addr))
            found.address = Kitnet::Ip6Addr::fromBytes(data);
        if (at->rta_type == IFA_FLAGS && bytes == sizeof flags) std::memcpy(&flags, data, sizeof flags);
    }
    const auto known = std::find(addresses_.begin(), addresses_.end(), found);
    const bool isUsable = header.nlmsg_type == RTM_NEWADDR && found.address.isUsable() &&
                          (flags & (IFA_F_TENTATIVE | IFA_F_DADFAILED)) == 0;
    if (isUsable == (known != addresses_.end())) return;
    changed_ = true;
    if (isUsable)
        addresses_.push_back(found);
    else
        addresses_.erase(known);
}

void Addresses::listAnew() {
    struct {
        nlmsghdr header;
        ifaddrmsg info;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETADDR;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    if (::send(socket_.get(), &request, sizeof request, 0) < 0)
        raise("KernelNetInfo::Addresses: list of the addresses");
    addresses_.clear();
    changed_ = true;
    lost_ = false;
    listing_ = true;
}

}  // namespace KernelNetInfo
