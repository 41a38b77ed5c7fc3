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
// A multiple of the page size would make the beginnings of all frames compete for the same lines of the cache.
constexpr std::size_t slotBytes = largestFrame + 513;
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

void takeAuxiliaryData(const tpacket_auxdata& data, ReadFrame& read) {
    read.checksumReady = (data.tp_status & TP_STATUS_CSUMNOTREADY) == 0;
    if ((data.tp_status & TP_STATUS_VLAN_VALID) == 0) return;
    const bool hasTpid = (data.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
    read.pkt->vlanTagIs(hasTpid ? data.tp_vlan_tpid : U16{ETHERTYPE_VLAN}, data.tp_vlan_tci);
}

template <class Data>
Data dataOf(const cmsghdr& control) {
    Data data;
    std::memcpy(&data, CMSG_DATA(&control), sizeof data);
    return data;
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

FrameBatch::FrameBatch() : bytes_(new U8[mostFrames * slotBytes]) {
    for (std::size_t i = 0; i < mostFrames; ++i) {
        places_[i] = {bytes_.get() + i * slotBytes, largestFrame};
        msghdr& message = messages_[i].msg_hdr;
        message.msg_iov = &places_[i];
        message.msg_iovlen = 1;
        message.msg_name = &beside_[i].from;
        message.msg_control = beside_[i].control.data();
    }
}

std::size_t FrameBatch::read(int packetSocket, std::size_t limit) {
    const auto count = static_cast<unsigned>(std::min(limit, mostFrames));
    for (unsigned i = 0; i < count; ++i) {  // the last call has set the sizes to what was received
        messages_[i].msg_hdr.msg_namelen = sizeof beside_[i].from;
        messages_[i].msg_hdr.msg_controllen = sizeof beside_[i].control;
    }
    int result;
    do result = ::recvmmsg(packetSocket, messages_.data(), count, MSG_DONTWAIT, nullptr);
    while (result < 0 &&
           (errno == EINTR || errno == ENETDOWN));  // reported once when the link goes down, before any frame
    if (result >= 0) return static_cast<std::size_t>(result);
    if (errno != EAGAIN && errno != EWOULDBLOCK) raise("reading a frame");
    return 0;
}

ReadFrame FrameBatch::frame(std::size_t index) {
    msghdr& message = messages_[index].msg_hdr;
    if ((message.msg_flags & MSG_TRUNC) != 0) raise("reading a frame", EMSGSIZE);
    const auto* const bytes = static_cast<const U8*>(places_[index].iov_base);
    ReadFrame read{Kitnet::globalPktManager().newPkt({bytes, messages_[index].msg_len}),
                   beside_[index].from.sll_pkttype == PACKET_OUTGOING};
    for (cmsghdr* at = CMSG_FIRSTHDR(&message); at != nullptr; at = CMSG_NXTHDR(&message, at)) {
        if (at->cmsg_level == SOL_PACKET && at->cmsg_type == PACKET_AUXDATA) {
            takeAuxiliaryData(dataOf<tpacket_auxdata>(*at), read);
        } else if (at->cmsg_level == SOL_SOCKET && at->cmsg_type == SCM_TIMESTAMPNS) {
            const auto time = dataOf<timespec>(*at);
            read.time = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
        }
    }
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
