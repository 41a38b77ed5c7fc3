#include "leasequery/LeaseQueryClient.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
#include <system_error>

#include "DhcpLib/Constants.h"
#include "Kitnet/BigEndian.h"

namespace DhcpTool {

namespace {

using Kitnet::IpAddr;
using namespace std::chrono_literals;

[[noreturn]] void raise(const std::string& what) { throw std::system_error(errno, std::system_category(), what); }

/// An IPv4 address with the DHCP server port.
class Endpoint {
public:
    explicit Endpoint(IpAddr ip = {}) {
        address_.sin_family = AF_INET;
        address_.sin_port = Kitnet::networkOrder(static_cast<Kcore::U16>(DhcpLib::Constants::dhcpServerPort));
        address_.sin_addr.s_addr = Kitnet::networkOrder(ip.value());
    }
    IpAddr ip() const { return IpAddr(Kitnet::networkOrder(address_.sin_addr.s_addr)); }
    sockaddr* address() { return reinterpret_cast<sockaddr*>(&address_); }
    socklen_t size() const { return sizeof address_; }

private:
    sockaddr_in address_{};
};

Kcore::FileDescriptor udpSocket() {
    Kcore::FileDescriptor fd(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) raise("UDP socket");
    return fd;
}

/// Up to a tenth longer or shorter than `wait`.
std::chrono::milliseconds varied(std::chrono::milliseconds wait, std::random_device& random) {
    return std::chrono::milliseconds(std::uniform_int_distribution(wait.count() * 9, wait.count() * 11)(random) / 10);
}

}  // namespace

IpAddr localAddressTowards(IpAddr peer) {
    const Kcore::FileDescriptor fd = udpSocket();
    Endpoint end(peer);
    socklen_t size = end.size();
    if (::connect(fd.get(), end.address(), size) != 0 || ::getsockname(fd.get(), end.address(), &size) != 0)
        raise("route to " + Kcore::textOf(peer));
    return end.ip();
}

LeaseQueryClient::LeaseQueryClient(IpAddr server, IpAddr giaddr)
    : server_(server), giaddr_(giaddr), socket_(udpSocket()) {
    Endpoint own(giaddr);
    if (::bind(socket_.get(), own.address(), own.size()) != 0)
        raise("UDP port 67 of " + Kcore::textOf(giaddr) +
              (errno == EACCES ? ", CAP_NET_BIND_SERVICE is missing" : ", to which replies go"));
}

std::optional<LeaseAnswer> LeaseQueryClient::ask(const LeaseSubject& subject, std::chrono::seconds timeout,
                                                 unsigned retries) {
    std::random_device random;
    const Kcore::U32 xid = random();
    const DhcpLib::PktPtr query = leaseQueryFor(subject, giaddr_, xid);
    std::chrono::milliseconds wait = timeout;
    const std::chrono::milliseconds longest = std::max<std::chrono::milliseconds>(timeout, 64s);
    for (unsigned tries = 0; tries <= retries; ++tries) {
        send(*query);
        if (auto answer = awaitAnswer(subject, xid, Clock::now() + varied(wait, random))) return answer;
        wait = std::min(2 * wait, longest);
    }
    return std::nullopt;
}

void LeaseQueryClient::send(const Kitnet::Pkt& query) {
    Endpoint server(server_);
    while (::sendto(socket_.get(), query.data(), query.bytes(), 0, server.address(), server.size()) < 0)
        if (errno != EINTR) raise("sending to " + Kcore::textOf(server_));
}

std::optional<LeaseAnswer> LeaseQueryClient::awaitAnswer(const LeaseSubject& subject, Kcore::U32 xid,
                                                         Clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return std::nullopt;
        pollfd wanted{socket_.get(), POLLIN, 0};
        const int ready = ::poll(&wanted, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) raise("waiting for the reply");
        if (ready <= 0) continue;
        if (auto answer = takeDatagram(subject, xid)) return answer;
    }
}

std::optional<LeaseAnswer> LeaseQueryClient::takeDatagram(const LeaseSubject& subject, Kcore::U32 xid) {
    std::array<Kcore::U8, 65536> bytes;  // the largest datagram
    Endpoint from;
    socklen_t fromSize = from.size();
    const ssize_t size = ::recvfrom(socket_.get(), bytes.data(), bytes.size(), 0, from.address(), &fromSize);
    if (size < 0) {
        // poll() may have reported a datagram that turned out to be damaged.
        if (errno == EAGAIN || errno == EINTR) return std::nullopt;
        raise("reading the reply");
    }
    LeaseReply reply{std::nullopt, "from another address"};
    if (from.ip() == server_) {
        const std::span datagram(bytes.data(), static_cast<std::size_t>(size));
        reply = leaseReplyOf(Kitnet::globalPktManager().newPkt(datagram), subject, xid);
    }
    if (!reply.answer) ++ignored_[reply.refusal];
    return reply.answer;
}

}  // namespace DhcpTool
