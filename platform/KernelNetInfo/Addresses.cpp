#include "KernelNetInfo/Addresses.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>

#include "KernelNetInfo/internal/RouteSocket.h"

namespace KernelNetInfo {

namespace {

const Kcore::ModuleTypes<Addresses> registration{"KernelNetInfo/Addresses"};

constexpr char what[] = "KernelNetInfo::Addresses: list of the addresses";

}  // namespace

Addresses::Addresses()
    : socket_(RouteSocket::open(RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR,
                                "KernelNetInfo::Addresses: rtnetlink address notifications")) {
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
    if (!changed_) return;
    observers_.notify();
    changed_ = false;  // not if an observer throws
}

/// Returns false if there is nothing to read.
bool Addresses::receive() {
    return RouteSocket::receive(socket_.get(), lost_, what, [this](const nlmsghdr& message) {
        if (message.nlmsg_type == NLMSG_DONE)
            listing_ = false;
        else if (message.nlmsg_type == RTM_NEWADDR || message.nlmsg_type == RTM_DELADDR)
            handleAddress(message);
    });
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
    RouteSocket::requestList(socket_.get(), RTM_GETADDR, what);
    addresses_.clear();
    changed_ = true;
    lost_ = false;
    listing_ = true;
}

}  // namespace KernelNetInfo
