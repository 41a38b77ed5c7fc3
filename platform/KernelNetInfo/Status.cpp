#include "KernelNetInfo/Status.h"

#include <sys/socket.h>

#include <cerrno>
#include <system_error>

#include "KernelNetInfo/internal/LinkMessage.h"

namespace KernelNetInfo {

namespace {

const Kcore::ModuleTypes<IntfStatus, Status> registration{"KernelNetInfo"};

constexpr std::size_t largestRead = 32768;  // the kernel sends no longer message to a reader with a buffer of this size

constexpr char listFailed[] = "KernelNetInfo::Status: list of the devices";

[[noreturn]] void raise(const char* what, int error = errno) {
    throw std::system_error(error, std::system_category(), what);
}

Kcore::FileDescriptor linkSocket() {
    Kcore::FileDescriptor fd(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!fd) raise("KernelNetInfo::Status: rtnetlink socket");
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK;
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        raise("KernelNetInfo::Status: rtnetlink link notifications");
    return fd;
}

}  // namespace

Status::Status() : socket_(linkSocket()) {
    listAnew();
    // The kernel produces the list while it is read, so this reads all of it.
    handleReadable();
}

Status::~Status() = default;
const Kcore::TypeData& Status::typeData() const { return Kcore::typeDataOf<Status>(); }

void Status::handleReadable() {
    for (;;) {
        while (receive()) {
        }
        if (!lost_ || listing_) return;
        listAnew();
    }
}

/// Returns false if there is nothing to read.
bool Status::receive() {
    alignas(nlmsghdr) Kcore::U8 bytes[largestRead];
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

void Status::handleMessages(const Kcore::U8* bytes, std::size_t size) {
    auto left = static_cast<U32>(size);
    for (auto* at = reinterpret_cast<const nlmsghdr*>(bytes); NLMSG_OK(at, left); at = NLMSG_NEXT(at, left)) {
        if ((at->nlmsg_flags & NLM_F_DUMP_INTR) != 0) lost_ = true;
        if (at->nlmsg_type == NLMSG_ERROR) raise(listFailed, -static_cast<const nlmsgerr*>(NLMSG_DATA(at))->error);
        if (at->nlmsg_type == NLMSG_DONE)
            handleListed();
        else if (const auto link = LinkMessage::from(*at))
            handleLink(*link);
    }
}

void Status::handleLink(const LinkMessage& link) {
    const Kcore::String* const known = nameOfIndex_.find(link.status.ifIndex());
    if (link.removed || (known != nullptr && *known != link.name)) intfDel(link.status.ifIndex());
    if (!link.removed) intfIs(link.name, link.status);
}

void Status::intfIs(const Kcore::String& name, const IntfStatus& status) {
    unconfirmed_.erase(status.ifIndex());
    nameOfIndex_.insertOrAssign(status.ifIndex(), name);
    intfStatus_.entryIs(name, status);
}

void Status::intfDel(U32 ifIndex) {
    unconfirmed_.erase(ifIndex);
    const auto name = nameOfIndex_.erase(ifIndex);
    if (!name) return;
    // Another device may have taken the name before this one's removal was reported.
    const IntfStatus* const status = intfStatus_.find(*name);
    if (status != nullptr && status->ifIndex() == ifIndex) intfStatus_.entryDel(*name);
}

void Status::listAnew() {
    struct {
        nlmsghdr header;
        ifinfomsg info;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETLINK;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    if (::send(socket_.get(), &request, sizeof request, 0) < 0) raise(listFailed);
    lost_ = false;
    listing_ = true;
    for (const auto& [index, name] : nameOfIndex_) unconfirmed_.insert(index);
}

/// Removes devices that the list did not confirm: their removal was missed. Does nothing if the list itself was
/// incomplete.
void Status::handleListed() {
    listing_ = false;
    while (!lost_ && !unconfirmed_.empty()) intfDel(*unconfirmed_.begin());
}

}  // namespace KernelNetInfo
