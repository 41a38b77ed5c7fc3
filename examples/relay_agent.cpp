// A DHCPv4 relay agent (RFC 1542, RFC 3046): the main example of the library.
//
// It receives requests as frames on the client-facing interfaces, adds option 82, and sends them to every server. It
// receives replies on UDP port 67, removes option 82, and sends them as frames on the interface that the circuit-id
// names. One process, one event loop.

#include <arpa/inet.h>
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

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "LinkSocket.h"

namespace {

using namespace DhcpLib;
using Kitnet::EthAddr;
using Kitnet::IpAddr;

/// What to do with a request that already has an option 82 (RFC 3046, section 2.1.1).
enum class Existing { keep, replace, forward, discard };

struct Settings {
    std::vector<std::string> clients;
    std::vector<std::string> servers;
    std::string giaddr, vrf, remoteId, vendorVtep;
    std::string circuitId = "%i:%v";
    std::string linkSelection;
    unsigned nativeVlan = 1, hopLimit = Constants::dhcpHopCountLimit, mtu = 1500;
    bool serverIdOverride = false, noVssControl = false, vendorInterface = false, restoreServerId = false,
         verbose = false;
    RelayGeneration generation = RelayGeneration::preparePacket;
    Existing existing = Existing::keep;
};

Settings settingsOf(int argc, char** argv) {
    Settings s;
    CLI::App app{"A small DHCPv4 relay agent"};
    app.add_option("-c,--client", s.clients, "Client-facing interface (repeat for more)")->required();
    app.add_option("-s,--server", s.servers, "Server's address (repeat for more)")->required()->check(CLI::ValidIPV4);
    app.add_option("--giaddr", s.giaddr, "Relay address; the client interface's own by default")->check(CLI::ValidIPV4);
    app.add_option("--circuit-id", s.circuitId, "Circuit-id; %i is the interface, %v the VLAN")->capture_default_str();
    app.add_option("--remote-id", s.remoteId, "Remote-id; the client interface's MAC address by default");
    app.add_option("--vrf", s.vrf, "VRF name (sub-option 151, with link selection)");
    app.add_option("--link-selection", s.linkSelection, "Sub-option 5: an address, or 'auto' for the interface's own");
    app.add_flag("--server-id-override", s.serverIdOverride,
                 "Sub-option 11 with the relay's address on the client's link");
    app.add_flag("--no-vss-control", s.noVssControl, "Leave out sub-option 152");
    app.add_flag("--vendor-interface", s.vendorInterface, "Add the interface's name in the vendor-specific sub-option");
    app.add_option("--vendor-vtep", s.vendorVtep, "Add this tunnel endpoint in the vendor-specific sub-option");
    app.add_flag("--restore-server-id", s.restoreServerId,
                 "Write the address of the real server into the server identifier of replies");
    app.add_option("--native-vlan", s.nativeVlan, "VLAN of untagged frames")->check(CLI::Range(1, 4094));
    app.add_option("--hop-limit", s.hopLimit, "Drop requests with at least this many hops")->check(CLI::Range(1, 254));
    app.add_option("--mtu", s.mtu, "Drop messages that would not fit")->check(CLI::Range(576, 65535));
    const std::map<std::string, RelayGeneration> generations{{"old", RelayGeneration::preparePacket},
                                                             {"new", RelayGeneration::preparePacketNew}};
    app.add_option("--generation", s.generation, "Rewriting function: old (preparePacket) or new (preparePacketNew)")
        ->transform(CLI::Transformer(generations));
    const std::map<std::string, Existing> policies{{"keep", Existing::keep},
                                                   {"replace", Existing::replace},
                                                   {"forward", Existing::forward},
                                                   {"discard", Existing::discard}};
    app.add_option("--existing", s.existing,
                   "What to do with a request that has option 82: keep|replace|forward|discard")
        ->transform(CLI::Transformer(policies));
    app.add_flag("-v,--verbose", s.verbose, "Print a line for each message");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::exit(app.exit(e));
    }
    return s;
}

class RelayAgent {
public:
    explicit RelayAgent(const Settings& settings);
    ~RelayAgent() { close(serverSocket_); }
    RelayAgent(const RelayAgent&) = delete;
    RelayAgent& operator=(const RelayAgent&) = delete;

    void run(int signals);

private:
    void handleFrame(LinkSocket& client);
    void forward(LinkSocket& client, const PktPtr& pkt, const PacketParser& parser);
    void handleReply();
    bool rewrite(const PktPtr& pkt, const RelayRewrite& r);
    RelayRewrite rewriteFor(const LinkSocket& client, const PacketParser& parser) const;
    bool applyPolicy(const PktPtr& pkt, RelayRewrite& r);
    void deliver(LinkSocket& client, unsigned vlan, const PktPtr& pkt);
    LinkSocket* clientOf(const PktPtr& pkt, const PacketParser& parser, unsigned& vlan);
    LinkSocket* clientNamed(std::string_view name);
    IpAddr giaddrOf(const LinkSocket& client) const {
        return settings_.giaddr.empty() ? client.address() : IpAddr::fromText(settings_.giaddr);
    }
    void drop(std::string_view reason) { ++drops_[std::string(reason)]; }
    void report(std::string_view what, const LinkSocket& client, const DhcpHdr& header) const;
    void printCounts() const;

    const Settings& settings_;
    Bridging::Config::Ptr config_ = Kcore::makeNode<Bridging::Config>();
    std::vector<std::unique_ptr<LinkSocket>> clients_;
    std::vector<sockaddr_in> servers_;
    int serverSocket_;
    unsigned long requests_ = 0, replies_ = 0;
    std::map<std::string, unsigned long> drops_;
};

sockaddr_in socketAddress(const IpAddr& address, U16 port) {
    sockaddr_in s{};
    s.sin_family = AF_INET;
    s.sin_port = htons(port);
    s.sin_addr.s_addr = htonl(address.value());
    return s;
}

RelayAgent::RelayAgent(const Settings& settings)
    : settings_(settings), serverSocket_(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    for (const std::string& name : settings.clients) {
        clients_.push_back(std::make_unique<LinkSocket>(name, U16{ETH_P_IP}));
        if (giaddrOf(*clients_.back()).isAny()) throw std::runtime_error(name + " has no IPv4 address");
        config_->switchIntfConfigIs(Kitnet::IntfId(name))->nativeVlanIs(Bridging::VlanId(settings.nativeVlan));
    }
    for (const std::string& server : settings.servers)
        servers_.push_back(socketAddress(IpAddr::fromText(server), Constants::dhcpServerPort));
    const sockaddr_in any = socketAddress(IpAddr(), Constants::dhcpServerPort);
    if (bind(serverSocket_, reinterpret_cast<const sockaddr*>(&any), sizeof any) < 0)
        throw std::system_error(errno, std::generic_category(), "UDP port 67");
}

void RelayAgent::run(int signals) {
    std::vector<pollfd> fds{{signals, POLLIN, 0}, {serverSocket_, POLLIN, 0}};
    for (const auto& client : clients_) fds.push_back({client->fd(), POLLIN, 0});
    for (;;) {
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) break;
        if (signalfd_siginfo signal; read(signals, &signal, sizeof signal) == sizeof signal) {
            printCounts();
            if (signal.ssi_signo != SIGUSR1) return;
        }
        handleReply();
        for (std::size_t i = 0; i < clients_.size(); ++i)
            if (fds[i + 2].revents != 0) handleFrame(*clients_[i]);
    }
}

/// Handles a frame from the clients' link. Drops what is not a request, and requests that another host has marked as
/// ours.
void RelayAgent::handleFrame(LinkSocket& client) {
    while (const PktPtr pkt = client.receive()) {
        PacketParser parser(config_);
        try {
            if (!parser.doParse(pkt, Kitnet::IntfId(client.name()), false)) {
                if (parser.isDhcp()) drop("malformed message");
                continue;
            }
        } catch (const Kcore::RangeException&) {
            drop("reserved VLAN");
            continue;
        }
        if (parser.udpDstPort().value() != Constants::dhcpServerPort) continue;
        if (parser.dhcpOpType() != BootpOpType::bootpReq)
            drop("not a request");
        else if (!parser.isDhcp())
            drop("BOOTP without options");
        else
            forward(client, pkt, parser);
    }
}

RelayRewrite RelayAgent::rewriteFor(const LinkSocket& client, const PacketParser& parser) const {
    RelayRewrite r;
    std::string circuitId = settings_.circuitId;
    const auto substitute = [&](std::string_view what, const std::string& by) {
        if (const std::size_t at = circuitId.find(what); at != circuitId.npos) circuitId.replace(at, what.size(), by);
    };
    substitute("%i", client.name());
    substitute("%v", Kcore::textOf(parser.vlanId()));
    r.circuitId = circuitId;
    r.remoteId = settings_.remoteId.empty() ? Kcore::textOf(client.mac()) : settings_.remoteId;
    r.vpnId = settings_.vrf;
    if (settings_.serverIdOverride) r.serverId = client.address();
    if (settings_.linkSelection == "auto")
        r.linkselectionId = client.address();
    else if (!settings_.linkSelection.empty())
        r.linkselectionId = IpAddr::fromText(settings_.linkSelection);
    r.offset = parser.offset();
    r.vssControlDisable = settings_.noVssControl;
    if (settings_.vendorInterface) r.vendorSpecificSubOptIntfName = client.name();
    if (!settings_.vendorVtep.empty())
        r.vendorSpecificSubOptSrcVtepIp = Kitnet::IpGenAddr::fromText(settings_.vendorVtep);
    return r;
}

/// Calls relayRewriteCheck first, so that no packet from the network can fail an assertion.
bool RelayAgent::rewrite(const PktPtr& pkt, const RelayRewrite& r) {
    const RelayRewriteForecast forecast = relayRewriteCheck(pkt, r, settings_.generation);
    if (!forecast.isRewritable()) {
        drop("not rewritable: " + Kcore::textOf(forecast.verdict));
        return false;
    }
    constexpr U32 ipAndUdpBytes = 28;
    if (forecast.messageBytes + ipAndUdpBytes > settings_.mtu) {
        drop("larger than the MTU");
        return false;
    }
    return relayRewrite(pkt, r, settings_.generation);
}

/// Applies the policy for an option 82 that a client or another relay has added.
bool RelayAgent::applyPolicy(const PktPtr& pkt, RelayRewrite& r) {
    DhcpMsgOptions options(pkt, static_cast<U16>(r.offset + Constants::bootpHdrSize + sizeof(U32)));
    if (!options.option().contains(DhcpOptionType::infoOpt)) return true;
    switch (settings_.existing) {
        case Existing::keep:
            return true;
        case Existing::forward:
            r.infoOpt = false;
            return true;
        case Existing::discard:
            drop("option 82 in a request");
            return false;
        case Existing::replace:
            break;
    }
    RelayRewrite removal = r;
    removal.op = BootpOption::bootpReply;
    return rewrite(pkt, removal);
}

void RelayAgent::forward(LinkSocket& client, const PktPtr& pkt, const PacketParser& parser) {
    const IpAddr giaddr = giaddrOf(client);
    const bool relayedBefore = !parser.giaddr().isAny();
    if (parser.giaddr() == giaddr) return drop("giaddr is our own");
    if (DhcpHdrWrapper(pkt, parser.offset()).hops() >= settings_.hopLimit) return drop("hop limit");

    RelayRewrite r = rewriteFor(client, parser);
    if (relayedBefore) r.infoOpt = false;  // the first relay knows where the client is
    if (!relayedBefore && !applyPolicy(pkt, r)) return;
    if (!rewrite(pkt, r)) return;
    DhcpHdrWrapper view(pkt, parser.offset());  // created here, since the rewrite may have moved the bytes
    DhcpHdr& header = *view.header();
    header.hopsInc(1);
    if (!relayedBefore) header.giaddrIs(giaddr);
    for (const sockaddr_in& server : servers_)
        if (sendto(serverSocket_, pkt->data() + parser.offset(), pkt->bytes() - parser.offset(), 0,
                   reinterpret_cast<const sockaddr*>(&server), sizeof server) < 0)
            drop("server not reachable");
    ++requests_;
    report("request", client, header);
}

LinkSocket* RelayAgent::clientNamed(std::string_view name) {
    for (const auto& client : clients_)
        if (client->name() == name) return client.get();
    return nullptr;
}

/// The interface that the circuit-id names, else the vendor block, else the one with the relay address.
LinkSocket* RelayAgent::clientOf(const PktPtr& pkt, const PacketParser& parser, unsigned& vlan) {
    const std::string_view circuitId = parser.circuitId();
    const std::size_t colon = circuitId.rfind(':');
    vlan = colon != circuitId.npos
               ? static_cast<unsigned>(std::strtoul(std::string(circuitId.substr(colon + 1)).c_str(), nullptr, 10))
               : settings_.nativeVlan;
    if (LinkSocket* client = clientNamed(circuitId.substr(0, colon))) return client;
    vlan = settings_.nativeVlan;
    Tyk::String circuit, remote, vpn, intfName;
    bool vss = false;
    IpAddr serverId, link;
    Kitnet::IpGenAddr vtep;
    if (parseInfoOptNew(pkt, circuit, remote, vpn, vss, serverId, link, intfName, vtep, 0))
        if (LinkSocket* client = clientNamed(intfName)) return client;
    for (const auto& client : clients_)
        if (giaddrOf(*client) == parser.giaddr()) return client.get();
    return nullptr;
}

void RelayAgent::handleReply() {
    std::array<U8, 65536> buffer;
    sockaddr_in from{};
    socklen_t fromBytes = sizeof from;
    for (ssize_t n; (n = recvfrom(serverSocket_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from),
                                  &fromBytes)) >= 0;) {
        const PktPtr pkt = Kitnet::globalPktManager().newPkt({buffer.data(), static_cast<std::size_t>(n)});
        PacketParser parser(config_);
        if (!parser.doParse(pkt, Kitnet::IntfId(), true) || parser.dhcpMsgType().empty()) {
            drop("malformed reply");
            continue;
        }
        if (parser.dhcpOpType() != BootpOpType::bootpRep)
            continue;  // a client's message, which also arrived as a frame
        unsigned vlan = 0;
        LinkSocket* client = clientOf(pkt, parser, vlan);
        RelayRewrite removal;
        removal.op = BootpOption::bootpReply;
        removal.vendorSpecificSubOptIntfName = client != nullptr ? client->name() : "";
        if (client == nullptr)
            drop("reply for an unknown interface");
        else if (rewrite(pkt, removal) &&
                 (!settings_.restoreServerId || setServerId(pkt, IpAddr(ntohl(from.sin_addr.s_addr)))))
            deliver(*client, vlan, pkt);
    }
}

/// Sends to the client's hardware address, or as a broadcast if the client asked for it (RFC 2131, section 4.1).
void RelayAgent::deliver(LinkSocket& client, unsigned vlan, const PktPtr& pkt) {
    const DhcpHdr header = Wire::load<DhcpHdr>(*pkt, 0);
    UdpFlow flow{client.mac(),    header.chaddr(),           giaddrOf(client),
                 header.yiaddr(), Constants::dhcpServerPort, Constants::dhcpClientPort};
    if (!header.ciaddr().isAny()) {
        flow.dst = header.ciaddr();
    } else if (Flags(header.flags()).broadcast() || header.yiaddr().isAny()) {
        flow.dst = IpAddr(0xffffffff);
        flow.dstMac = EthAddr::fromText("ff:ff:ff:ff:ff:ff");
    }
    if (vlan != settings_.nativeVlan) flow.vlan = static_cast<int>(vlan & 0x0fff);
    frameUdp(*pkt, flow);
    if (!client.send(*pkt)) return drop("client not reachable");
    ++replies_;
    report("reply", client, header);
}

void RelayAgent::report(std::string_view what, const LinkSocket& client, const DhcpHdr& header) const {
    if (settings_.verbose)
        std::cout << what << " on " << client.name() << " for " << header.chaddr() << " giaddr " << header.giaddr()
                  << std::endl;
}

void RelayAgent::printCounts() const {
    std::cout << "requests relayed: " << requests_ << ", replies delivered: " << replies_ << '\n';
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
        RelayAgent(settings).run(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
    } catch (const std::exception& e) {
        std::cerr << "relay_agent: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
