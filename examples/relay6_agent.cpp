// A DHCPv6 relay agent (RFC 8415, section 19), built on the library's views.
//
// It receives clients' messages as frames, so that it knows the client's link-layer address (RFC 6939). Messages of
// relays between us and the client, and replies of servers, arrive on UDP port 547. Requests are wrapped in a
// relay-forward. Replies are unwrapped and sent to their peer address on the interface that the interface-id names. One
// process, one event loop.

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/ethernet.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <vector>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6MessageBuilder.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/OptionParser.h"
#include "LinkSocket.h"

namespace {

using namespace DhcpLib;
using Kitnet::EthAddr;
using Kitnet::Ip6Addr;

struct Settings {
    std::vector<std::string> clients, servers;
    std::string vrf;
    unsigned nativeVlan = 1;
    bool vss = false, verbose = false;
};

Settings settingsOf(int argc, char** argv) {
    Settings s;
    s.vrf = "default";
    CLI::App app{"A small DHCPv6 relay agent"};
    app.add_option("-c,--client", s.clients, "Client-facing interface (repeat for more)")->required();
    app.add_option("-s,--server", s.servers, "Address of a server or of the next relay (repeat for more)")->required();
    app.add_option("--vrf", s.vrf, "VRF name in the interface-id")->capture_default_str();
    app.add_flag("--vss", s.vss, "Send the VRF name as virtual subnet selection, too (RFC 6607)");
    app.add_option("--native-vlan", s.nativeVlan, "VLAN of untagged frames")->check(CLI::Range(1, 4094));
    app.add_flag("-v,--verbose", s.verbose, "Print a line for each message");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::exit(app.exit(e));
    }
    return s;
}

bool isLinkLocal(const Ip6Addr& a) { return a.byte(0) == 0xfe && (a.byte(1) & 0xc0) == 0x80; }

/// The interface's first address that is not link-local; :: if it has none.
Ip6Addr globalAddressOf(const std::string& interfaceName) {
    Ip6Addr found;
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) < 0) return found;
    for (const ifaddrs* i = all; i != nullptr; i = i->ifa_next) {
        if (i->ifa_addr == nullptr || i->ifa_addr->sa_family != AF_INET6 || interfaceName != i->ifa_name) continue;
        const auto address = Ip6Addr::fromBytes(reinterpret_cast<const sockaddr_in6*>(i->ifa_addr)->sin6_addr.s6_addr);
        if (!isLinkLocal(address) && found.isUnspecified()) found = address;
    }
    freeifaddrs(all);
    return found;
}

sockaddr_in6 socketAddress(const Ip6Addr& address, U16 port, unsigned scope = 0) {
    sockaddr_in6 s{};
    s.sin6_family = AF_INET6;
    s.sin6_port = htons(port);
    s.sin6_scope_id = scope;
    std::memcpy(s.sin6_addr.s6_addr, address.bytes(), sizeof address);
    return s;
}

/// What is known about a message to be relayed.
struct Origin {
    LinkSocket& client;
    Ip6Addr peer;
    U8 hopCount = 0;
    Ip6Addr linkAddr;
    EthAddr mac;  ///< of a client on the link; zero if another relay is between us and the client
    unsigned vlan = 0;
};

/// Builds a relay-forward. Each function throws std::length_error if its option does not fit.
class RelayForward {
public:
    explicit RelayForward(const Origin& origin)
        : message_(Dhcp6MsgType::relayForward, origin.hopCount, origin.linkAddr, origin.peer) {}

    void addMessage(std::span<const U8> message) {
        add(Dhcp6OptionType::relayMsg, message.size())->dataIs(message.data());
    }
    void addInterfaceId(const std::string& interfaceName, const std::string& vrf) {
        const std::optional<U16> len = interfaceIdBytes({interfaceName, vrf, {}, {}});
        if (!len) throw std::length_error("interface-id");
        const auto view = dhcp6InterfaceIdFactory(add(Dhcp6OptionType::interfaceId, *len));
        view->intfNameIs(interfaceName);
        view->vrfNameIs(L3::VrfName(vrf));
        view->setInterfaceIdDataInPkt();
    }
    void addRemoteId(const LinkSocket& client, unsigned vlan) {
        const std::string port = client.name() + ":" + std::to_string(vlan);
        const auto option = add(Dhcp6OptionType::remoteId, Dhcp6Const::minRIdWSubOpt_size + port.size());
        const auto view = dhcp6RemoteIdFactory(option);
        view->entnoIs(Dhcp6Const::entno);
        const auto duid = view->duidIs(option, Dhcp6Const::duid_offset);
        duid->duidTypeIs(Dhcp6Const::duidType_ll);
        duid->hardwareTypeIs(Constants::hardwareTypeEthernet);
        duid->llAddrIs(client.mac());
        view->interfaceIdIs(client.index());
        view->subOptValueIs(port);
    }
    void addVss(const std::string& vrf) {
        const auto view = dhcp6VirtualSubnetSelectionFactory(add(Dhcp6OptionType::vss, 1 + vrf.size()));
        view->vssTypeIs(0);  // NVT ASCII
        view->vrfNameIs(L3::VrfName(vrf));
    }
    void addClientLinkLayerAddr(const EthAddr& mac) {
        const auto view = dhcpLinkLayerAddrFactory(
            add(Dhcp6OptionType::linkLayerAddr, Dhcp6Const::llAddrType_size + Dhcp6Const::llAddr_size));
        view->llAddrTypeIs(Constants::hardwareTypeEthernet);
        view->llAddrIs(mac);
    }
    const Kitnet::Pkt& packet() const { return *message_.pkt(); }

private:
    /// Adds an option with `len` zero bytes of data.
    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::size_t len) {
        const Dhcp6Option::Ptr option = message_.add(type, len);
        if (!option) throw std::length_error("relay-forward");
        return option;
    }

    Dhcp6MessageBuilder message_;
};

class Relay6Agent {
public:
    explicit Relay6Agent(const Settings& settings);
    ~Relay6Agent() { close(socket_); }
    Relay6Agent(const Relay6Agent&) = delete;
    Relay6Agent& operator=(const Relay6Agent&) = delete;

    void run(int signals);

private:
    void handleFrames(LinkSocket& client);
    void handleDatagrams();
    void handleRelayForward(const PktPtr& pkt, const sockaddr_in6& from, unsigned interfaceIndex);
    void handleRelayReply(const PktPtr& pkt);
    void forward(const Origin& origin, std::span<const U8> message);
    bool send(std::span<const U8> message, const sockaddr_in6& to);
    void drop(std::string_view reason) { ++drops_[std::string(reason)]; }
    void printCounts() const;

    const Settings& settings_;
    Bridging::Config::Ptr config_ = Kcore::makeNode<Bridging::Config>();
    std::vector<std::unique_ptr<LinkSocket>> clients_;
    int socket_;
    unsigned long forwarded_ = 0, returned_ = 0;
    std::map<std::string, unsigned long> drops_;
};

Relay6Agent::Relay6Agent(const Settings& settings)
    : settings_(settings), socket_(socket(AF_INET6, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    setsockopt(socket_, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    setsockopt(socket_, IPPROTO_IPV6, IPV6_RECVPKTINFO, &on, sizeof on);
    const sockaddr_in6 any = socketAddress(Ip6Addr(), Constants::dhcp6ServerPort);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&any), sizeof any) < 0)
        throw std::system_error(errno, std::generic_category(), "UDP port 547");
    const Ip6Addr allAgents = Ip6Addr::fromText("ff02::1:2");  // RFC 8415, section 7.1
    for (const std::string& name : settings.clients) {
        clients_.push_back(std::make_unique<LinkSocket>(name, U16{ETH_P_IPV6}));
        config_->switchIntfConfigIs(Kitnet::IntfId(name))->nativeVlanIs(Bridging::VlanId(settings.nativeVlan));
        ipv6_mreq group{};
        std::memcpy(group.ipv6mr_multiaddr.s6_addr, allAgents.bytes(), sizeof allAgents);
        group.ipv6mr_interface = clients_.back()->index();
        if (setsockopt(socket_, IPPROTO_IPV6, IPV6_JOIN_GROUP, &group, sizeof group) < 0)
            throw std::system_error(errno, std::generic_category(), "joining ff02::1:2 on " + name);
    }
}

void Relay6Agent::run(int signals) {
    std::vector<pollfd> fds{{signals, POLLIN, 0}};
    for (const auto& client : clients_) fds.push_back({client->fd(), POLLIN, 0});
    fds.push_back({socket_, POLLIN, 0});
    for (;;) {
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) break;
        if (signalfd_siginfo signal; read(signals, &signal, sizeof signal) == sizeof signal) {
            printCounts();
            if (signal.ssi_signo != SIGUSR1) return;
        }
        for (const auto& client : clients_) handleFrames(*client);
        handleDatagrams();
    }
}

/// Handles messages of clients on the link. The parser rejects relay messages; those arrive on the UDP socket.
void Relay6Agent::handleFrames(LinkSocket& client) {
    while (const PktPtr pkt = client.receive()) {
        Dhcp6PacketParser parser(config_);
        try {
            if (!parser.doParseDhcp6(pkt, Kitnet::IntfId(client.name()))) continue;
        } catch (const Kcore::RangeException&) {
            drop("reserved VLAN");
            continue;
        }
        constexpr U32 udpHeader = 8;
        const U16 at = static_cast<U16>(parser.dhcp6OptionsOffset() - Dhcp6Const::reghdr_size);
        const bool toServer = parser.udpDstPort().value() == Constants::dhcp6ServerPort;
        const bool fromServer = parser.dhcp6MsgType() == Dhcp6MsgType::advertise ||
                                parser.dhcp6MsgType() == Dhcp6MsgType::reply ||
                                parser.dhcp6MsgType() == Dhcp6MsgType::reconfigure;
        if (!toServer || fromServer) continue;
        if (parser.udpLen() < udpHeader + Dhcp6Const::reghdr_size || parser.udpLen() - udpHeader > pkt->bytes() - at) {
            drop("malformed frame");
            continue;
        }
        const Ip6Addr link = globalAddressOf(client.name());
        forward({client, parser.srcIp6(), 0, link, parser.srcMac(), parser.vlanId().value()},
                {pkt->data() + at, parser.udpLen() - udpHeader});
    }
}

void Relay6Agent::forward(const Origin& origin, std::span<const U8> message) try {
    RelayForward relayed(origin);
    relayed.addMessage(message);
    relayed.addInterfaceId(origin.client.name(), settings_.vrf);
    relayed.addRemoteId(origin.client, origin.vlan);
    if (settings_.vss) relayed.addVss(settings_.vrf);
    if (!origin.mac.isZero()) relayed.addClientLinkLayerAddr(origin.mac);
    const Kitnet::Pkt& pkt = relayed.packet();
    for (const std::string& server : settings_.servers)
        if (!send({pkt.data(), pkt.bytes()}, socketAddress(Ip6Addr::fromText(server), Constants::dhcp6ServerPort)))
            drop("server not reachable");
    ++forwarded_;
    if (settings_.verbose) std::cout << "relayed from " << origin.peer << " on " << origin.client.name() << std::endl;
} catch (const std::length_error&) {
    drop("too long to be relayed");
}

bool Relay6Agent::send(std::span<const U8> message, const sockaddr_in6& to) {
    return sendto(socket_, message.data(), message.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0;
}

void Relay6Agent::handleDatagrams() {
    std::array<U8, 65536> buffer;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in6_pktinfo))> control;
    for (;;) {
        sockaddr_in6 from{};
        iovec data{buffer.data(), buffer.size()};
        msghdr message{&from, sizeof from, &data, 1, control.data(), control.size(), 0};
        const ssize_t n = recvmsg(socket_, &message, 0);
        if (n < 0) return;
        const PktPtr pkt = Kitnet::globalPktManager().newPkt({buffer.data(), static_cast<std::size_t>(n)});
        const auto type = static_cast<Dhcp6MsgType>(Wire::load<U8>(*pkt, 0));
        if (type != Dhcp6MsgType::relayForward && type != Dhcp6MsgType::relayReply)
            continue;  // a client's message, which also arrived as a frame
        if (!dhcp6OptionBasicCheck(pkt, 0)) {
            drop("malformed relay message");
            continue;
        }
        in6_pktinfo info{};
        if (const cmsghdr* c = CMSG_FIRSTHDR(&message); c != nullptr && c->cmsg_type == IPV6_PKTINFO)
            std::memcpy(&info, CMSG_DATA(c), sizeof info);
        if (type == Dhcp6MsgType::relayForward)
            handleRelayForward(pkt, from, info.ipi6_ifindex);
        else
            handleRelayReply(pkt);
    }
}

/// Relays a message of another relay. The hop count is incremented up to the limit (RFC 8415, section 19.1.2).
void Relay6Agent::handleRelayForward(const PktPtr& pkt, const sockaddr_in6& from, unsigned interfaceIndex) {
    const U8 hops = Dhcp6RelayHdr(pkt, 0).hopCount();
    if (hops >= Constants::dhcp6HopCountLimit) return drop("hop count limit");
    const Ip6Addr peer = Ip6Addr::fromBytes(from.sin6_addr.s6_addr);
    for (const auto& client : clients_) {
        if (client->index() != interfaceIndex) continue;
        const Ip6Addr link = isLinkLocal(peer) ? globalAddressOf(client->name()) : Ip6Addr();
        return forward({*client, peer, static_cast<U8>(hops + 1), link, EthAddr(), settings_.nativeVlan},
                       {pkt->data(), pkt->bytes()});
    }
    drop("relay on an unknown interface");
}

/// Sends the message inside to the peer, on the interface that our interface-id names.
void Relay6Agent::handleRelayReply(const PktPtr& pkt) {
    const Dhcp6RelayHdr header(pkt, 0);
    const Dhcp6Options options(pkt, Dhcp6Const::relayhdr_size);
    const auto inner = options.option(Dhcp6OptionType::relayMsg);
    const auto interfaceId = options.option(Dhcp6OptionType::interfaceId);
    if (!inner || inner->len() < Dhcp6Const::reghdr_size || !interfaceId) return drop("reply without a message");
    // Decodes without a view, which would throw for some malformed data.
    const InterfaceIdFields name = decodeInterfaceId(interfaceId->dataText());
    for (const auto& client : clients_) {
        if (client->name() != name.intfName) continue;
        const bool toRelay = static_cast<Dhcp6MsgType>(*inner->data()) == Dhcp6MsgType::relayReply;
        const U16 port = toRelay ? Constants::dhcp6ServerPort : Constants::dhcp6ClientPort;
        const unsigned scope = isLinkLocal(header.peerAddr()) ? client->index() : 0;
        if (!send({inner->data(), inner->len()}, socketAddress(header.peerAddr(), port, scope)))
            return drop("client not reachable");
        ++returned_;
        if (settings_.verbose)
            std::cout << "returned to " << header.peerAddr() << " on " << client->name() << std::endl;
        return;
    }
    drop("reply for an unknown interface");
}

void Relay6Agent::printCounts() const {
    std::cout << "messages relayed: " << forwarded_ << ", replies returned: " << returned_ << '\n';
    for (const auto& [reason, count] : drops_) std::cout << "dropped, " << reason << ": " << count << '\n';
    std::cout.flush();
}

}  // namespace

int main(int argc, char** argv) {
    const Settings settings = settingsOf(argc, argv);
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    try {
        Relay6Agent(settings).run(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
    } catch (const std::exception& e) {
        std::cerr << "relay6_agent: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
