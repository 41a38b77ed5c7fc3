// A DHCPv4 relay agent (RFC 1542, RFC 3046) of one link and one server: relay LINK RELAY-ADDRESS SERVER
// RELAY-ADDRESS is this host's address on the link. This is an example; agents/dhcprelay is a complete agent.

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <iostream>

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"
#include "Kitnet/UdpMend.h"

namespace {

using namespace DhcpLib;

constexpr U8 mostHops = 16;  // RFC 1542, section 4.1.1

struct Relay {
    Kitnet::IntfId link;
    Kitnet::IpAddr address;
    sockaddr_in server{};
    Kcore::FileDescriptor udp{socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    Bridging::Config::Ptr bridging = Kcore::makeNode<Bridging::Config>();
};

sockaddr_in serverPortAt(const Kitnet::IpAddr& address) {
    sockaddr_in out{};
    out.sin_family = AF_INET;
    out.sin_port = htons(Constants::dhcpServerPort);
    out.sin_addr.s_addr = htonl(address.value());
    return out;
}

/// Asks relayRewriteCheck first, so that no packet makes an assertion fail. Uses preparePacket, because it removes all
/// of option 82 from a reply.
bool rewrite(const PktPtr& pkt, const RelayRewrite& how) {
    constexpr auto generation = RelayGeneration::preparePacket;
    return relayRewriteCheck(pkt, how, generation).isRewritable() && relayRewrite(pkt, how, generation);
}

/// A client's request gains option 82 and the relay's address.
void relayRequest(const Relay& relay, const Interface::PamFrame& frame) {
    PacketParser parser(relay.bridging);
    if (frame.outgoing || frame.pkt->vlanTagPresent()) return;
    if (!accepted([&] { return parser.doParse(frame.pkt, frame.intf, false); })) return;
    if (parser.dhcpOpType() != BootpOpType::bootpReq || !parser.isDhcp() || !parser.giaddr().isAny()) return;
    RelayRewrite how;
    how.offset = parser.offset();
    how.circuitId = relay.link.name();
    how.remoteId = "relay";
    if (Wire::load<DhcpHdr>(*frame.pkt, how.offset).hops() > mostHops) return;
    if (removeInfoOption(frame.pkt, how.offset).area != AreaState::wellFormed || !rewrite(frame.pkt, how)) return;
    DhcpHdrWrapper header(frame.pkt, how.offset);
    header.hopsIs(static_cast<U8>(header.hops() + 1));
    header.giaddrIs(relay.address);
    sendto(relay.udp.get(), frame.pkt->data() + how.offset, frame.pkt->bytes() - how.offset, 0,
           reinterpret_cast<const sockaddr*>(&relay.server), sizeof relay.server);
}

/// A server's reply loses option 82 and goes to all hosts of the link, which RFC 1542 allows.
void relayReply(const Relay& relay, Interface::EthDevPam& link, const Kitnet::EthAddr& linkMac) {
    std::array<U8, 65536> buffer;
    const ssize_t size = recv(relay.udp.get(), buffer.data(), buffer.size(), 0);
    if (size < static_cast<ssize_t>(Constants::bootpHdrSize)) return;
    const PktPtr pkt = Kitnet::globalPktManager().newPkt({buffer.data(), static_cast<std::size_t>(size)});
    const auto header = Wire::load<DhcpHdr>(*pkt, 0);
    if (header.bootpOp() != BootpOpType::bootpRep || header.giaddr() != relay.address) return;
    RelayRewrite how;
    how.op = BootpOption::bootpReply;
    if (!rewrite(pkt, how)) return;
    constexpr U32 macs = 12, ip = 14, udp = 34, headers = 42;
    pkt->newSharedHeadData(headers);
    Wire::fill(*pkt, 0, sizeof linkMac, 0xff);
    Wire::store(*pkt, sizeof linkMac, linkMac);
    Wire::store<U16>(*pkt, macs, 0x0800);
    Wire::store<U16>(*pkt, ip, 0x4500);
    Wire::store<U16>(*pkt, ip + 8, 64 << 8 | IPPROTO_UDP);  // time to live, protocol
    Wire::store(*pkt, ip + 12, relay.address);
    Wire::fill(*pkt, ip + 16, sizeof(Kitnet::IpAddr), 0xff);
    Wire::store<U16>(*pkt, udp, Constants::dhcpServerPort);
    Wire::store<U16>(*pkt, udp + 2, Constants::dhcpClientPort);
    Kitnet::mendUdp(*pkt, ip);
    link.sendPkt(pkt);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return std::cerr << "usage: relay LINK RELAY-ADDRESS SERVER\n", 2;
    Relay relay{Kitnet::IntfId(argv[1]), Kitnet::IpAddr::fromText(argv[2])};
    relay.server = serverPortAt(Kitnet::IpAddr::fromText(argv[3]));
    const sockaddr_in own = serverPortAt(relay.address);
    if (bind(relay.udp.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) return perror("bind"), 1;
    relay.bridging->switchIntfConfigIs(relay.link)->nativeVlanIs(Bridging::VlanId(1));
    const auto kernel = Kcore::makeNode<KernelNetInfo::Status>();
    const auto manager = pamManagerFactory("relay", Kcore::makeNode<Interface::AllIntfStatusDir>(kernel),
                                           Kcore::makeNode<Interface::AllIntfStatusLocalDir>(), kernel);
    manager->pamDesiredIntfDir()->intfIs(relay.link);
    const auto link = manager->ethDevPamCollection()->ethDevPam(relay.link);
    for (;;) {
        std::array<pollfd, 3> fds{{{kernel->fd(), POLLIN, 0}, {link->fd(), POLLIN, 0}, {relay.udp.get(), POLLIN, 0}}};
        if (poll(fds.data(), fds.size(), -1) < 0) return 1;
        kernel->handleReadable();
        if (const auto frame = link->readPkt()) relayRequest(relay, frame);
        if (const auto* device = manager->deviceIntfStatusDir()->deviceIntfStatus(relay.link))
            relayReply(relay, *link, device->macAddr());
    }
}
