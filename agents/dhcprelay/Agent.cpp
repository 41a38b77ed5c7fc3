#include "Agent.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <csignal>
#include <iostream>
#include <system_error>
#include <thread>

namespace DhcpRelay {

namespace {

using DhcpLib::Constants;

Kcore::FileDescriptor signalSource() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGTERM, SIGINT, SIGUSR1}) sigaddset(&set, signal);
    if (sigprocmask(SIG_BLOCK, &set, nullptr) != 0) throw std::system_error(errno, std::system_category(), "signals");
    Kcore::FileDescriptor fd(::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
    if (!fd) throw std::system_error(errno, std::system_category(), "signals");
    std::signal(SIGPIPE, SIG_IGN);  // the agent goes on if nobody reads its output any more
    return fd;
}

DhcpLib::PamManager::Ptr clientAccess(Protocol protocol, const KernelNetInfo::Status::Ptr& kni,
                                      const Settings& settings) {
    const auto all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
    const auto local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();
    auto manager =
        DhcpLib::pamManagerFactory(protocol == Protocol::dhcp4 ? "DhcpPamMan" : "Dhcp6PamMan", all, local, kni);
    for (const ClientLink& link : settings.clients) manager->pamDesiredIntfDir()->intfIs(link.name);
    return manager;
}

void say(const std::string& what) { std::cerr << "dhcprelay: " + what + "\n" << std::flush; }

}  // namespace

std::vector<Agent::Stack> Agent::openStacks(const Settings& settings, const KernelNetInfo::Status::Ptr& kni) {
    std::vector<Stack> stacks;
    const auto add = [&](Protocol protocol) {
        stacks.push_back({protocol, ServerSocket(protocol), clientAccess(protocol, kni, settings), {}});
    };
    if (settings.ipv4) add(Protocol::dhcp4);
    if (settings.ipv6) add(Protocol::dhcp6);
    return stacks;
}

Agent::Agent(const Settings& settings)
    : context_(settings),
      counters_(settings),
      signals_(signalSource()),
      kni_(Kcore::makeNode<KernelNetInfo::Status>()),
      addresses_(Kcore::makeNode<KernelNetInfo::Addresses>()),
      stacks_(openStacks(settings, kni_)),
      devices_(kni_->intfStatus().observers().observe([this](const Kcore::String& name) { handleDevice(name); })),
      addressChanges_(
          addresses_->observers().observe([this] { context_.links.addressesAre(addresses_->addresses()); })),
      now_(Clock::now()) {
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

/// Handles a device that was added, removed or changed. Packet access of the stacks has already followed the change.
void Agent::handleDevice(const Kcore::String& name) {
    const Settings& s = context_.settings;
    const auto isNamed = [&](const ClientLink& link) { return link.name.name() == name.view(); };
    const bool isClient = std::any_of(s.clients.begin(), s.clients.end(), isNamed);
    if (!isClient && (!s.serverInterface || s.serverInterface->name() != name.view())) return;
    const KernelNetInfo::IntfStatus* const device = kni_->intfStatus().find(name);
    if (device == nullptr) say(name.str() + ": there is no such interface, waiting for it");
    context_.links.deviceIs(name, device != nullptr ? *device : KernelNetInfo::IntfStatus());
    if (device == nullptr || !isClient) return;
    for (const Stack& stack : stacks_) {
        const auto pam = stack.clients->ethDevPamCollection()->ethDevPam(IntfId(name));
        if (pam->fd() < 0) say(name.str() + ": " + pam->error().str());
        // Network cards and switches pass on only the groups that a host has joined.
        if (stack.protocol == Protocol::dhcp6 && !stack.servers.joinAllAgents(device->ifIndex()))
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

/// Lists the descriptors to wait for. Called after each change of the devices, because packet access changes with them.
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

/// One turn: waits until a descriptor is ready, then serves every source a bounded number of times.
void Agent::poll() {
    if (rest_ > Clock::duration::zero()) std::this_thread::sleep_for(rest_);
    if (::poll(fds_.data(), fds_.size(), pollTimeout()) < 0 && errno != EINTR)
        throw std::system_error(errno, std::system_category(), "waiting for messages");
    now_ = Clock::now();
    context_.timeIs(now_);

    if (fds_[0].revents != 0) handleSignals();
    if (context_.settings.statsSeconds != 0 && now_ >= nextStats_) {
        nextStats_ = now_ + std::chrono::seconds(context_.settings.statsSeconds);
        printCounters();
    }
    constexpr std::size_t firstSource = 3;
    std::size_t messages = 0;
    for (std::size_t i = 0; i < sources_.size(); ++i)
        if (const short events = fds_[firstSource + i].revents; events != 0) {
            if ((events & POLLERR) != 0 && !sources_[i].link) handleReturned(*sources_[i].stack);
            messages += handleSource(sources_[i]);
        }
    rest_ = pace_.restAfter(now_, messages);
    if (fds_[1].revents == 0 && fds_[2].revents == 0) return;
    kni_->handleReadable();
    addresses_->handleReadable();
    listSources();
}

/// Handles the messages that are waiting, up to a limit, and returns their number.
std::size_t Agent::handleSource(const Source& source) {
    Stack& stack = *source.stack;
    if (source.link) {
        const std::size_t count = stack.access[*source.link]->readPkts(frames_);
        for (const Interface::PamFrame& frame : std::span(frames_).first(count))
            handleFrame(stack, *source.link, frame);
        return count;
    }
    const std::size_t count = stack.servers.receive(replies_);
    for (Transaction& reply : std::span(replies_).first(count)) handleReply(stack, reply);
    return count;
}

/// Counts the requests that did not reach their server.
void Agent::handleReturned(Stack& stack) {
    for (std::size_t i = 0; i < longestTurn; ++i) {
        const auto returned = stack.servers.takeReturned();
        if (!returned) return;
        ServerCounters* const server = counters_.ofServer(returned->to);
        if (server == nullptr) continue;
        ++server->returned;
        printFailure(*server, returned->error);
    }
}

/// Prints a line about a server, at most one per second.
void Agent::printFailure(const ServerCounters& server, int error) {
    if (now_ < nextFailure_) return;
    nextFailure_ = now_ + std::chrono::seconds(1);
    say("server " + Kcore::textOf(server.address) + ": " + std::generic_category().message(error));
}

void Agent::handleSignals() {
    for (signalfd_siginfo signal; ::read(signals_.get(), &signal, sizeof signal) == sizeof signal;)
        if (signal.ssi_signo == SIGUSR1)
            printCounters();
        else
            ended_ = true;
}

void Agent::handleFrame(Stack& stack, std::size_t link, const Interface::PamFrame& frame) {
    if (frame.outgoing) return;
    Transaction t;
    const Receipt receipt = receiveFrame({frame.pkt, frame.checksumReady}, context_.links, link, t);
    if (!receipt.isOurs || t.protocol != stack.protocol) return;
    t.port.link = static_cast<U16>(link);
    Reason reason = receipt.reason;
    if (reason == Reason::none) reason = process(t, context_);
    if (reason == Reason::none) reason = sendToServers(stack, t);
    finish(t, reason);
}

void Agent::handleReply(Stack& stack, Transaction& reply) {
    Reason reason = process(reply, context_);
    if (reason == Reason::none) reason = deliver(stack, reply);
    finish(reply, reason);
}

/// Counts the message and, with --verbose, prints a line about it.
void Agent::finish(const Transaction& t, Reason reason) {
    LinkCounters& counters = counters_.of(t.port);
    if (reason != Reason::none)
        counters.count(reason);
    else
        ++(t.side == Side::client ? counters.relayed : counters.delivered);
    if (t.remarks.any())
        for (std::size_t i = 0; i < reasonCount; ++i)
            if (t.remarks[i]) counters.count(static_cast<Reason>(i));
    if (context_.settings.verbose) print(t, reason);
}

/// Sends the request to all servers. Succeeds if the kernel accepts it for at least one of them.
Reason Agent::sendToServers(Stack& stack, Transaction& t) {
    const std::span<const U8> message(t.pkt->data() + t.at, t.bytes());
    const Settings& s = context_.settings;
    bool sent = false;
    const auto sendTo = [&](const IpGenAddr& address, U16 port) {
        ServerCounters& server = *counters_.ofServer(address);
        if (stack.servers.send(message, address, port, context_.links.serverIfIndex())) {
            ++server.sent;
            sent = true;
            return;
        }
        ++server.notSent;
        printFailure(server, errno);
    };
    if (stack.protocol == Protocol::dhcp4)
        for (const IpAddr& server : s.servers4) sendTo(server, Constants::dhcpServerPort);
    else
        for (const Ip6Addr& server : s.servers6) sendTo(server, Constants::dhcp6ServerPort);
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
        // The kernel sends the reply. To a link-local address it would send on the native VLAN.
        if (t.port.tag.isPresent() && isLinkLocal(t.clientAddress.v6Addr())) return Reason::notDelivered;
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

void Agent::print(const Transaction& t, Reason reason) const {
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
    std::cout.clear();  // forgets an earlier failure, such as a full disk
    std::cout << (context_.settings.statsFormat == StatsFormat::json ? counters_.json() : counters_.text())
              << std::flush;
}

}  // namespace DhcpRelay
