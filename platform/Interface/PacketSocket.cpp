#include "Interface/internal/PacketSocket.h"

#include <linux/filter.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

#include "Kitnet/BigEndian.h"

namespace Interface {

namespace {

using Kcore::U8;

constexpr std::size_t largestFrame = 65535;  // bytes; longer frames are refused
constexpr std::size_t addressBytes = 2 * ETH_ALEN;

[[noreturn]] void raise(const char* what, int error = errno) {
    throw std::system_error(error, std::system_category(), what);
}

template <class T>
void optionIs(int fd, int level, int option, const T& value, const char* what) {
    if (::setsockopt(fd, level, option, &value, sizeof value) != 0) raise(what);
}

void attach(int fd, const Kitnet::SockFilterProgram& program) {
    static_assert(sizeof(Kitnet::SockFilter) == sizeof(sock_filter));
    auto* const instructions = reinterpret_cast<const sock_filter*>(program.instructions);
    const sock_fprog filter{program.count, const_cast<sock_filter*>(instructions)};
    optionIs(fd, SOL_SOCKET, SO_ATTACH_FILTER, filter, "filter program");
}

/// Data that the kernel delivers beside a frame.
void takeAuxiliaryData(msghdr& message, ReadFrame& read) {
    for (cmsghdr* at = CMSG_FIRSTHDR(&message); at != nullptr; at = CMSG_NXTHDR(&message, at)) {
        if (at->cmsg_level != SOL_PACKET || at->cmsg_type != PACKET_AUXDATA) continue;
        tpacket_auxdata data;
        std::memcpy(&data, CMSG_DATA(at), sizeof data);
        read.checksumReady = (data.tp_status & TP_STATUS_CSUMNOTREADY) == 0;
        if ((data.tp_status & TP_STATUS_VLAN_VALID) == 0) return;
        const bool hasTpid = (data.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
        return read.pkt->vlanTagIs(hasTpid ? data.tp_vlan_tpid : U16{ETHERTYPE_VLAN}, data.tp_vlan_tci);
    }
}

}  // namespace

Kcore::FileDescriptor openPacketSocket(U32 ifIndex, const PacketSocketSettings& settings) {
    // With protocol 0 the socket receives nothing until it is bound to the device in the last step.
    Kcore::FileDescriptor fd(::socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) raise(errno == EPERM ? "packet socket, CAP_NET_RAW is missing" : "packet socket");
    optionIs(fd.get(), SOL_PACKET, PACKET_AUXDATA, 1, "out-of-band VLAN tags");
    if (settings.filterProgram.count != 0) attach(fd.get(), settings.filterProgram);
    if (settings.receiveBuffer != 0) {
        constexpr U32 largest = std::numeric_limits<int>::max();
        optionIs(fd.get(), SOL_SOCKET, SO_RCVBUF, std::min(settings.receiveBuffer, largest), "receive buffer");
    }

    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = Kitnet::networkOrder(settings.protocol);
    address.sll_ifindex = static_cast<int>(ifIndex);
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        raise("binding the packet socket");
    return fd;
}

ReadFrame readFrame(int packetSocket) {
    std::array<U8, largestFrame> frame;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(tpacket_auxdata))> control;
    sockaddr_ll address{};
    iovec part{frame.data(), frame.size()};
    msghdr message{&address, sizeof address, &part, 1, control.data(), control.size(), 0};
    ssize_t size;
    do size = ::recvmsg(packetSocket, &message, 0);
    while (size < 0 &&
           (errno == EINTR || errno == ENETDOWN));  // reported once when the link goes down, before any frame

    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return {};
    if (size < 0) raise("reading a frame");
    if ((message.msg_flags & MSG_TRUNC) != 0) raise("reading a frame", EMSGSIZE);
    ReadFrame read{Kitnet::globalPktManager().newPkt({frame.data(), static_cast<std::size_t>(size)}),
                   address.sll_pkttype == PACKET_OUTGOING};
    takeAuxiliaryData(message, read);
    return read;
}

void sendFrame(int packetSocket, const Kitnet::Pkt& pkt) {
    if (pkt.bytes() < addressBytes) raise("sending a frame", EMSGSIZE);
    std::array<U8, 4> tag;
    Kitnet::storeBigEndian(tag.data(), pkt.vlanTagTpid());
    Kitnet::storeBigEndian(tag.data() + 2, pkt.vlanTagTci());
    auto* const bytes = const_cast<U8*>(pkt.data());  // the kernel only reads them
    std::array<iovec, 3> parts{iovec{bytes, addressBytes}, iovec{tag.data(), pkt.vlanTagPresent() ? tag.size() : 0},
                               iovec{bytes + addressBytes, pkt.bytes() - addressBytes}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    while (::sendmsg(packetSocket, &message, 0) < 0)
        if (errno != EINTR) raise("sending a frame");
}

U32 takeDropCount(int packetSocket) {
    tpacket_stats counts{};
    socklen_t size = sizeof counts;
    return ::getsockopt(packetSocket, SOL_PACKET, PACKET_STATISTICS, &counts, &size) == 0 ? counts.tp_drops : 0;
}

}  // namespace Interface
