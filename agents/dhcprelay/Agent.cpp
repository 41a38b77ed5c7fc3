#include "Agent.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/signalfd.h>

#include <cerrno>
#include <csignal>
#include <iostream>
#include <system_error>

namespace DhcpRelay {

namespace {

using DhcpLib::Constants;

constexpr int longestTurn = 32;  // messages that are taken from one source before the others get their turn
// Turns that follow each other faster are those of a busy agent: more messages are waiting than one.
constexpr std::chrono::microseconds busyTurn{40};

Kcore::FileDescriptor signalSource() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGTERM, SIGINT, SIGUSR1}) sigaddset(&set, signal);
    if (sigprocmask(SIG_BLOCK, &set, nullptr) != 0) throw std::system_error(errno, std::system_category(), "signals");
    Kcore::FileDescriptor fd(::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
    if (!fd) throw std::system_error(errno, std::system_category(), "signals");
    return fd;
}

DhcpLib::PamManager::Ptr clientAccess(Protocol protocol, const KernelNetInfo::Status::Ptr& kni,
                                      const Settings& settings) {
    const auto all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
    const auto local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();
    const auto manager =
        DhcpLib::pamManagerFactory(protocol == Protocol::dhcp4 ? "DhcpPamMan" : "Dhcp6PamMan", all, local, kni);
    for (const ClientLink& link : settings.clients) manager->pamDesiredIntfDir()->intfIs(link.name);
    return manager;
}

void say(const std::string& what) { std::cerr << "dhcprelay: " + what + "\n" << std::flush; }

}  // namespace

Agent::Agent(const Settings& settings)
    : context_(settings),
      counters_(settings.clients),
      budgets_(settings.clients.size(), Budget{static_cast<double>(settings.rate), Clock::now()}),
      signals_(signalSource()),
      kni_(Kcore::makeNode<KernelNetInfo::Status>()),
      addresses_(Kcore::makeNode<KernelNetInfo::Addresses>()),
      devices_(kni_->intfStatus().observers().observe([this](const Kcore::String& name) { handleDevice(name); })),
      addressChanges_(
          addresses_->observers().observe([this] { context_.links.addressesAre(addresses_->addresses()); })),
      now_(Clock::now()) {
    const auto add = [&](Protocol protocol) {
        stacks_.push_back({protocol,
                           ServerSocket(protocol, settings.serverInterface.has_value()),
                           clientAccess(protocol, kni_, settings),
                           {}});
    };
    if (settings.ipv4) add(Protocol::dhcp4);
    if (settings.ipv6) add(Protocol::dhcp6);
    requireAccess();
    context_.links.addressesAre(addresses_->addresses());
    for (const ClientLink& link : settings.clients) handleDevice(link.name.name());
    if (settings.serverInterface) handleDevice(settings.serverInterface->name());
    nextStats_ = now_ + std::chrono::seconds(settings.statsSeconds);
    listSources();
}

void Agent::requireAccess() const {
    for (const Stack& stack : stacks_)
        for (const auto& [intf, pam] : stack.clients->ethDevPamCollection()->ethDevPam())
            if (pam->fd() < 0 && kni_->intfStatus().find(intf.name()) != nullptr)
                throw std::runtime_error(Kcore::textOf(intf) + ": " + pam->error().str());
}

/// A device came, went or changed.
void Agent::handleDevice(const Kcore::String& name) {
    const Settings& s = context_.settings;
    const auto isNamed = [&](const ClientLink& link) { return link.name.name() == name.view(); };
    const bool isClient = std::any_of(s.clients.begin(), s.clients.end(), isNamed);
    if (!isClient && (!s.serverInterface || s.serverInterface->name() != name.view())) return;
    const KernelNetInfo::IntfStatus* const device = kni_->intfStatus().find(name);
    if (device == nullptr) say(name.str() + ": there is no such interface, waiting for it");
    context_.links.deviceIs(name, device != nullptr ? *device : KernelNetInfo::IntfStatus());
    if (device == nullptr || !isClient) return;
    for (Stack& stack : stacks_) {
        if (stack.protocol != Protocol::dhcp6) continue;
        // Network cards and switches pass on only the groups that somebody has joined. Joining twice does no harm.
        static const Ip6Addr allAgents = Ip6Addr::fromText("ff02::1:2");
        ipv6_mreq group{};
        std::copy_n(allAgents.bytes(), sizeof allAgents, group.ipv6mr_multiaddr.s6_addr);
        group.ipv6mr_interface = device->ifIndex();
        if (::setsockopt(stack.servers.fd(), IPPROTO_IPV6, IPV6_JOIN_GROUP, &group, sizeof group) != 0 &&
            errno != EADDRINUSE)
            say(name.str() + ": cannot join ff02::1:2, " + std::generic_category().message(errno));
    }
}

void Agent::run() {
    std::string names;
    for (const ClientLink& link : context_.settings.clients)
        names += (names.empty() ? "" : ", ") + Kcore::textOf(link.name);
    say("ready, clients on " + names);
    while (!ended_) poll();
}

/// After each change of the devices, since packet access comes and goes with them.
void Agent::listSources() {
    fds_ = {{signals_.get(), POLLIN, 0}, {kni_->fd(), POLLIN, 0}, {addresses_->fd(), POLLIN, 0}};
    sources_.clear();
    for (Stack& stack : stacks_) {
        fds_.push_back({stack.servers.fd(), POLLIN, 0});
        sources_.push_back({&stack, std::nullopt});
    }
    for (Stack& stack : stacks_) {
        stack.access.clear();
        for (std::size_t link = 0; link < context_.settings.clients.size(); ++link) {
            stack.access.push_back(
                stack.clients->ethDevPamCollection()->ethDevPam(context_.settings.clients[link].name));
            if (stack.access[link]->fd() < 0) continue;
            fds_.push_back({stack.access[link]->fd(), POLLIN, 0});
            sources_.push_back({&stack, link});
        }
    }
}

int Agent::pollTimeout() const {
    if (context_.settings.statsSeconds == 0) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextStats_ - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(0, left));
}

/// One turn: waits until there is something to do, then serves every source a bounded number of times.
void Agent::poll() {
    if (::poll(fds_.data(), fds_.size(), pollTimeout()) < 0 && errno != EINTR)
        throw std::system_error(errno, std::system_category(), "waiting for messages");
    const Clock::time_point before = std::exchange(now_, Clock::now());
    isBusy_ = now_ - before < busyTurn;
    context_.now = static_cast<U32>(std::chrono::duration_cast<std::chrono::seconds>(now_.time_since_epoch()).count());

    if (fds_[0].revents != 0) handleSignals();
    if (context_.settings.statsSeconds != 0 && now_ >= nextStats_) {
        nextStats_ = now_ + std::chrono::seconds(context_.settings.statsSeconds);
        printCounters();
    }
    constexpr std::size_t firstSource = 3;
    for (std::size_t i = 0; i < sources_.size(); ++i)
        if (fds_[firstSource + i].revents != 0) handleSource(sources_[i]);
    if (fds_[1].revents == 0 && fds_[2].revents == 0) return;
    kni_->handleReadable();
    addresses_->handleReadable();
    listSources();
}

void Agent::handleSource(Source& source) {
    for (int i = 0; i < source.turn; ++i)
        if (!(source.link ? handleFrame(*source.stack, *source.link) : handleDatagram(*source.stack))) {
            source.turn = std::max(1, i);
            return;
        }
    if (isBusy_ || source.turn > 1) source.turn = std::min(2 * source.turn, longestTurn);
}

void Agent::handleSignals() {
    for (signalfd_siginfo signal; ::read(signals_.get(), &signal, sizeof signal) == sizeof signal;)
        if (signal.ssi_signo == SIGUSR1)
            printCounters();
        else
            ended_ = true;
}

bool Agent::spend(std::size_t link) {
    if (context_.settings.rate == 0) return true;
    const double rate = context_.settings.rate;
    Budget& budget = budgets_[link];
    budget.requests =
        std::min(rate, budget.requests + rate * std::chrono::duration<double>(now_ - budget.since).count());
    budget.since = now_;
    if (budget.requests < 1) return false;
    budget.requests -= 1;
    return true;
}

/// False where no frame is waiting.
bool Agent::handleFrame(Stack& stack, std::size_t link) {
    const Interface::PamFrame frame = stack.access[link]->readPkt();
    if (!frame) return false;
    if (frame.outgoing) return true;
    Transaction t;
    const Receipt receipt = receiveFrame({frame.pkt, frame.checksumReady}, context_.links, link, t);
    if (!receipt.isOurs || t.protocol != stack.protocol) return true;
    t.port.link = static_cast<U16>(link);
    Reason reason = receipt.reason;
    if (reason == Reason::none && !spend(link)) reason = Reason::rateLimit;
    if (reason == Reason::none) reason = process(t, context_);
    if (reason == Reason::none) reason = sendToServers(stack, t);
    finish(t, reason);
    return true;
}

/// False where no datagram is waiting.
bool Agent::handleDatagram(Stack& stack) {
    Transaction t;
    if (!stack.servers.receive(t)) return false;
    Reason reason = process(t, context_);
    if (reason == Reason::none) reason = deliver(stack, t);
    finish(t, reason);
    return true;
}

/// Counts and tells what became of the message.
void Agent::finish(const Transaction& t, Reason reason) {
    LinkCounters& counters = counters_.of(t.port);
    if (reason != Reason::none)
        counters.count(reason);
    else
        ++(t.side == Side::client ? counters.relayed : counters.delivered);
    if (t.remarks.any())
        for (std::size_t i = 0; i < reasonCount; ++i)
            if (t.remarks[i]) counters.count(static_cast<Reason>(i));
    if (context_.settings.verbose) tell(t, reason);
}

/// To every server; one that takes it is enough.
Reason Agent::sendToServers(Stack& stack, Transaction& t) {
    const std::span<const U8> message(t.pkt->data() + t.at, t.bytes());
    const Settings& s = context_.settings;
    bool sent = false;
    if (stack.protocol == Protocol::dhcp4)
        for (const IpAddr& server : s.servers4)
            sent |= stack.servers.send(message, server, Constants::dhcpServerPort, 0);
    else
        for (const Ip6Addr& server : s.servers6)
            sent |= stack.servers.send(message, server, Constants::dhcp6ServerPort, context_.links.serverIfIndex());
    return sent ? Reason::none : Reason::serverUnreachable;
}

Reason Agent::deliver(Stack& stack, Transaction& t) {
    const Link& link = context_.links.of(t.port);
    const bool isV4 = stack.protocol == Protocol::dhcp4;
    const U16 clientPort = isV4 ? Constants::dhcpClientPort : Constants::dhcp6ClientPort;
    const U16 serverPort = isV4 ? Constants::dhcpServerPort : Constants::dhcp6ServerPort;
    Destination to{link.device.macAddr(),
                   t.clientMac,
                   t.port.tag,
                   {},
                   t.clientAddress,
                   serverPort,
                   t.toRelay ? serverPort : clientPort};
    if (isV4)
        to.src = link.address4.isAny() ? t.relayAddress : IpGenAddr(link.address4);
    else
        to.src = isLinkLocal(t.clientAddress.v6Addr()) ? link.linkLocal : link.global;
    if (t.clientMac.isZero() || !to.src.isUsable()) {
        const std::span<const U8> message(t.pkt->data() + t.at, t.bytes());
        const bool sent = stack.servers.send(message, t.clientAddress, to.dstPort, link.device.ifIndex());
        return sent ? Reason::none : Reason::notDelivered;
    }
    const auto& pam = stack.access[t.port.link];
    const std::vector<PktPtr> frames = framesOf(t.pkt, to, link.device.mtu());
    if (frames.size() > 1) t.remark(Reason::fragmented);
    for (const PktPtr& frame : frames)
        if (!pam->sendPkt(frame)) return Reason::notDelivered;
    return Reason::none;
}

void Agent::tell(const Transaction& t, Reason reason) const {
    std::string line = t.port.isKnown()
                           ? std::string(context_.links.of(t.port).name()) + " vlan " + std::to_string(t.port.vlan)
                           : std::string("servers");
    line += t.protocol == Protocol::dhcp4 ? " DHCPv4 " : " DHCPv6 ";
    line += t.side == Side::client ? "request from " + Kcore::textOf(t.srcMac) : "reply from " + Kcore::textOf(t.src);
    if (reason != Reason::none)
        line += " dropped, " + std::string(rowOf(reason).name) + ": " + std::string(rowOf(reason).text);
    else
        line += t.side == Side::client ? " relayed" : " delivered";
    say(line);
}

void Agent::printCounters() {
    for (std::size_t link = 0; link < context_.settings.clients.size(); ++link) {
        U64 dropped = 0;
        for (const Stack& stack : stacks_) dropped += stack.access[link]->dropped();
        counters_.ofLink(link).kernelDropped = dropped;
    }
    std::cout << (context_.settings.statsFormat == StatsFormat::json ? counters_.json() : counters_.text())
              << std::flush;
}

}  // namespace DhcpRelay
