#include "LinkSocket.h"

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <system_error>

#include "DhcpLib/Wire.h"
#include "Kitnet/UdpMend.h"

namespace {

using DhcpLib::Wire::store;
using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

[[noreturn]] void fail(const std::string& what) { throw std::system_error(errno, std::generic_category(), what); }

ifreq request(const std::string& name) {
    ifreq r{};
    name.copy(r.ifr_name, IFNAMSIZ - 1);
    return r;
}

}  // namespace

LinkSocket::LinkSocket(const std::string& interfaceName, U16 etherType)
    : name_(interfaceName), fd_(socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, htons(etherType))) {
    if (fd_ < 0) fail("packet socket for " + name_);
    ifreq r = request(name_);
    if (ioctl(fd_, SIOCGIFHWADDR, &r) < 0) fail("interface " + name_);
    mac_ = Kitnet::EthAddr::fromBytes(reinterpret_cast<const U8*>(r.ifr_hwaddr.sa_data));
    r = request(name_);
    if (ioctl(fd_, SIOCGIFINDEX, &r) < 0) fail("index of " + name_);
    sockaddr_ll link{};
    link.sll_family = AF_PACKET;
    link.sll_protocol = htons(etherType);
    link.sll_ifindex = r.ifr_ifindex;
    index_ = static_cast<unsigned>(r.ifr_ifindex);
    const int on = 1;
    if (setsockopt(fd_, SOL_PACKET, PACKET_AUXDATA, &on, sizeof on) < 0) fail("auxiliary data of " + name_);
    if (bind(fd_, reinterpret_cast<sockaddr*>(&link), sizeof link) < 0) fail("binding to " + name_);
    const int udp = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in in{};
    r = request(name_);
    if (ioctl(udp, SIOCGIFADDR, &r) == 0) std::memcpy(&in, &r.ifr_addr, sizeof in);
    close(udp);
    address_ = Kitnet::IpAddr(ntohl(in.sin_addr.s_addr));
}

LinkSocket::~LinkSocket() { close(fd_); }

Kcore::Ptr<Kitnet::Pkt> LinkSocket::receive() {
    std::array<U8, 65536> frame;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(tpacket_auxdata))> control;
    for (;;) {
        sockaddr_ll from{};
        iovec data{frame.data(), frame.size()};
        msghdr message{&from, sizeof from, &data, 1, control.data(), control.size(), 0};
        const ssize_t n = recvmsg(fd_, &message, 0);
        if (n < 0) return nullptr;
        if (from.sll_pkttype == PACKET_OUTGOING) continue;
        auto pkt = Kitnet::globalPktManager().newPkt({frame.data(), static_cast<std::size_t>(n)});
        for (cmsghdr* c = CMSG_FIRSTHDR(&message); c != nullptr; c = CMSG_NXTHDR(&message, c)) {
            if (c->cmsg_level != SOL_PACKET || c->cmsg_type != PACKET_AUXDATA) continue;
            tpacket_auxdata aux;
            std::memcpy(&aux, CMSG_DATA(c), sizeof aux);
            if ((aux.tp_status & TP_STATUS_VLAN_VALID) != 0)
                pkt->vlanTagIs((aux.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0 ? aux.tp_vlan_tpid : U16{0x8100},
                               aux.tp_vlan_tci);
        }
        return pkt;
    }
}

bool LinkSocket::send(const Kitnet::Pkt& frame) {
    return ::send(fd_, frame.data(), frame.bytes(), 0) == static_cast<ssize_t>(frame.bytes());
}

void frameUdp(Kitnet::Pkt& pkt, const UdpFlow& flow) {
    constexpr U32 udpBytes = 8, ipBytes = 20, macsBytes = 12, tagBytes = 4;
    const U32 ipAt = macsBytes + 2 + (flow.vlan != 0 ? tagBytes : 0), udpAt = ipAt + ipBytes;
    pkt.newSharedHeadData(udpAt + udpBytes);
    store(pkt, 0, flow.dstMac);
    store(pkt, sizeof flow.dstMac, flow.srcMac);
    if (flow.vlan != 0) {
        store<U16>(pkt, macsBytes, 0x8100);
        store<U16>(pkt, macsBytes + 2, static_cast<U16>(flow.vlan));
    }
    store<U16>(pkt, ipAt - 2, 0x0800);
    store<U16>(pkt, ipAt, 0x4500);
    store<U8>(pkt, ipAt + 8, 64);  // time to live
    store<U8>(pkt, ipAt + 9, IPPROTO_UDP);
    store(pkt, ipAt + 12, flow.src);
    store(pkt, ipAt + 16, flow.dst);
    store<U16>(pkt, udpAt, flow.srcPort);
    store<U16>(pkt, udpAt + 2, flow.dstPort);
    Kitnet::mendUdp(pkt, ipAt);
}
