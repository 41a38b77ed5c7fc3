#include "KernelNetInfo/internal/RouteSocket.h"

#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace KernelNetInfo::RouteSocket {

namespace {

constexpr std::size_t largestRead = 32768;  // the kernel sends no longer message to a reader with a buffer of this size

[[noreturn]] void raise(const char* what, int error = errno) {
    throw std::system_error(error, std::system_category(), what);
}

}  // namespace

Kcore::FileDescriptor open(Kcore::U32 groups, const char* what) {
    Kcore::FileDescriptor fd(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!fd) raise(what);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) raise(what);
    return fd;
}

void requestList(int fd, Kcore::U16 type, const char* what) {
    struct {
        nlmsghdr header;
        rtgenmsg family;  // 0 asks for the objects of all families
    } request{};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtgenmsg));
    request.header.nlmsg_type = type;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    if (::send(fd, &request, request.header.nlmsg_len, 0) < 0) raise(what);
}

bool receive(int fd, bool& lost, const char* what, const std::function<void(const nlmsghdr&)>& handle) {
    alignas(nlmsghdr) Kcore::U8 bytes[largestRead];
    sockaddr_nl sender{};
    iovec part{bytes, sizeof bytes};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    const ssize_t size = ::recvmsg(fd, &message, 0);
    if (size < 0) {
        if (errno == ENOBUFS) lost = true;
        return errno == ENOBUFS || errno == EINTR;
    }
    if ((message.msg_flags & MSG_TRUNC) != 0) lost = true;
    if (sender.nl_pid != 0) return size != 0;  // not from the kernel
    auto left = static_cast<Kcore::U32>(size);
    std::exception_ptr failure;
    for (auto* at = reinterpret_cast<const nlmsghdr*>(bytes); NLMSG_OK(at, left); at = NLMSG_NEXT(at, left)) {
        if ((at->nlmsg_flags & NLM_F_DUMP_INTR) != 0) lost = true;
        if (at->nlmsg_type == NLMSG_ERROR) raise(what, -static_cast<const nlmsgerr*>(NLMSG_DATA(at))->error);
        try {
            handle(*at);
        } catch (...) {  // go on, since the end of a list may be among the other messages
            lost = true;
            failure = std::current_exception();
        }
    }
    if (failure) std::rethrow_exception(failure);
    return size != 0;
}

}  // namespace KernelNetInfo::RouteSocket
