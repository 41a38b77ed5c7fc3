#include "exchange/ExchangeSteps.h"

#include <algorithm>

#include "Kcore/Hash.h"

namespace DhcpTool {

namespace {

using enum MessageKind;

/// Copies of one frame, from a capture on several interfaces, arrive within this time. Retransmissions take longer.
constexpr Nanoseconds copyTime = std::chrono::milliseconds(50);

constexpr MessageKinds selections = kinds(request, request6);

std::string cut(std::string_view text) { return std::string(text.substr(0, Exchange::longestText)); }

/// Sets a text that is still empty.
void supply(std::string& target, std::string_view text) {
    if (target.empty()) target = cut(text);
}

void takeAddresses(std::vector<Assigned>& target, const Event& event) {
    if (event.assigned.empty()) return;
    const std::size_t count = std::min(event.assigned.size(), Exchange::mostAddresses);
    target.assign(event.assigned.begin(), event.assigned.begin() + static_cast<std::ptrdiff_t>(count));
}

U64 pathOf(const Event& event) {
    U64 path = event.relays;
    for (const std::size_t part :
         {event.source.hash(), event.destination.hash(), event.relay.hash(), event.sourceMac.hash()})
        path = path * 0x9e3779b97f4a7c15 + part;
    return path;
}

RequestPurpose purposeOf(const Event& event) {
    if (event.kind != request) return RequestPurpose::none;
    if (!event.ciaddr.isUsable()) return event.serverId.empty() ? RequestPurpose::reboot : RequestPurpose::select;
    const bool broadcast = event.destination.v4Addr() == Kitnet::IpAddr(0xffffffff);
    return broadcast || event.relays != 0 ? RequestPurpose::rebind
                                          : RequestPurpose::renew;  // relays forward broadcasts
}

bool usesAddress(RequestPurpose purpose) {
    return purpose == RequestPurpose::renew || purpose == RequestPurpose::rebind;
}

/// Whether `event` repeats the request in `step`, or is a copy of it on the other side of a relay agent.
bool repeats(const Step& step, const Event& event) {
    return step.kind == event.kind && step.xid == event.xid &&
           usesAddress(step.purpose) == usesAddress(purposeOf(event));
}

/// Whether a message of this kind may come next. After the last answer only a DECLINE may.
bool mayFollow(const Exchange& exchange, MessageKind kind) {
    if (exchange.done() && !contains(kinds(decline, decline6), kind)) return false;
    const MessageKinds earlier = roleOf(kind).continues;
    return std::ranges::any_of(exchange.steps, [&](const Step& step) { return contains(earlier, step.kind); });
}

bool isRequest(const MessageRole& role) { return role.answerTo == 0; }

/// `everyPath`: counts messages on another path, too. That is right for answers. A request is on several paths if a
/// relay agent sends it to several servers.
void see(Sighting& seen, const Event& event, bool everyPath) {
    const U64 path = pathOf(event);
    if (!seen.seen()) {
        seen = {event.time, event.time, 1, event.relays, path};
        return;
    }
    if (event.relays > seen.relays) {
        seen.relays = event.relays;
        seen.first = seen.last = event.time;
        return;
    }
    if (event.relays < seen.relays) return;
    const bool copy = path == seen.path && timeBetween(seen.last, event.time) < copyTime;
    if (copy) return;
    if (everyPath || path == seen.path) ++seen.count;
    seen.last = event.time;
}

void see(Step& step, const Event& event, bool everyPath) {
    see(event.relays == 0 ? step.near : step.far, event, everyPath);
}

/// The latest step for which `wanted` holds, or null.
template <class Wanted>
Step* latestStep(Exchange& exchange, Wanted wanted) {
    const auto step = std::find_if(exchange.steps.rbegin(), exchange.steps.rend(), wanted);
    return step == exchange.steps.rend() ? nullptr : &*step;
}

Step* newStep(Exchange& exchange, const Event& event) {
    if (exchange.steps.size() == Exchange::mostSteps) {
        exchange.incomplete = true;
        return nullptr;
    }
    Step& step = exchange.steps.emplace_back();
    step.kind = event.kind;
    step.xid = event.xid;
    return &step;
}

void addRequest(Exchange& exchange, const Event& event) {
    Step* step = latestStep(exchange, [&](const Step& s) { return repeats(s, event); });
    if (step == nullptr) step = newStep(exchange, event);
    if (step == nullptr) return;
    if (!step->clientSide().seen() || event.relays == 0) step->purpose = purposeOf(event);
    see(*step, event, false);
    if (event.relays != 0) step->relayInfo |= event.relayInfo;
    takeAddresses(exchange.requested, event);
    if (contains(selections, event.kind) && !event.serverId.empty()) exchange.chosenServer = cut(event.serverId);
    exchange.rapidCommit |= event.rapidCommit;
}

bool isSameServer(const ExchangeServer& server, const Event& event, bool direct) {
    return server.id == cut(event.serverId) && (!server.direct || !direct || server.mac == event.sourceMac);
}

std::optional<U8> serverOf(Exchange& exchange, const Event& event) {
    const bool direct = event.relays == 0 && !event.relay.isUsable();
    auto& servers = exchange.servers;
    auto server = std::ranges::find_if(servers, [&](const auto& s) { return isSameServer(s, event, direct); });
    if (server == servers.end()) {
        if (servers.size() == Exchange::mostServers) {
            exchange.incomplete = true;
            return std::nullopt;
        }
        server = servers.emplace(servers.end());
        server->id = cut(event.serverId);
    }
    (event.relays == 0 ? server->near : server->far) = true;
    if (direct || !server->address.isUsable()) {
        server->mac = event.sourceMac;
        const bool idIsAddress = !roleOf(event.kind).dhcp6 && event.serverId.size() == Kitnet::IpAddr::wireBytes;
        server->address =
            idIsAddress
                ? Kitnet::IpGenAddr(Kitnet::IpAddr::fromBytes(reinterpret_cast<const U8*>(event.serverId.data())))
                : event.source;
    }
    server->direct |= direct;
    if (!server->offered.isUsable() && !event.assigned.empty()) server->offered = event.assigned.front().address;
    return static_cast<U8>(server - servers.begin());
}

std::optional<Nanoseconds> waitBetween(const Sighting& request, const Event& answer) {
    if (!request.seen()) return std::nullopt;
    return timeBetween(request.last, answer.time);
}

/// Relates a new answer to its request.
void relate(Step& answer, Exchange& exchange) {
    const MessageKinds answered = answer.role().answerTo;
    const auto isAnswered = [&](const Step& s) { return contains(answered, s.kind) && s.xid == answer.xid; };
    if (const Step* const request = latestStep(exchange, isAnswered))
        answer.request = static_cast<U8>(request - exchange.steps.data());
}

void takeStatuses(Exchange& exchange, const Event& event) {
    for (const StatusCode& status : event.statuses) {
        if (exchange.statuses.size() == Exchange::mostStatuses) return;
        Exchange::Status taken{event.kind, status.code, cut(status.text)};
        if (std::ranges::count(exchange.statuses, taken) == 0) exchange.statuses.push_back(std::move(taken));
    }
}

void addAnswer(Exchange& exchange, const Event& event) {
    const auto server = serverOf(exchange, event);
    const auto same = [&](const Step& s) { return s.kind == event.kind && s.xid == event.xid && s.server == server; };
    Step* step = latestStep(exchange, same);
    const bool isNew = step == nullptr;
    if (isNew) step = newStep(exchange, event);
    if (step == nullptr) return;
    step->server = server;
    if (isNew) relate(*step, exchange);
    if (step->request) {
        const Step& request = exchange.steps[*step->request];
        if (event.relays == 0 && !step->near.seen()) step->wait = waitBetween(request.near, event);
        if (event.relays != 0 && !step->far.seen()) step->serverWait = waitBetween(request.far, event);
        step->lostRelayInfo |= event.relays != 0 && request.relayInfo && !event.relayInfo;
    }
    if (event.relays != 0) step->relayInfo |= event.relayInfo;
    see(*step, event, true);
    supply(step->text, event.text);
    step->refuses |= event.kind == nak || !event.statuses.empty();
    // An offer that comes after the last answer assigns nothing.
    if (step->role().ends || !exchange.done()) takeAddresses(exchange.assigned, event);
    takeStatuses(exchange, event);
}

/// The client's own link says most about the client, so its values replace those from the server's side of a relay
/// agent.
void takeClient(Exchange& exchange, const Event& event) {
    if (exchange.steps.empty() || (event.relays == 0 && !exchange.near)) exchange.vlan = event.vlan;
    exchange.near |= event.relays == 0;
    if (!exchange.mac) exchange.mac = event.clientMac;
    supply(exchange.clientId, event.clientId);
    supply(exchange.hostname, event.hostname);
    supply(event.relays == 0 ? exchange.port : exchange.farPort, event.port);
    if (event.relays == 0) supply(exchange.interface, event.interface);
    if (event.relays != 0 && !exchange.relay.isUsable()) exchange.relay = event.relay;
}

}  // namespace

const Step* Exchange::lastRequest() const {
    const auto step = std::find_if(steps.rbegin(), steps.rend(), [](const Step& s) { return isRequest(s.role()); });
    return step == steps.rend() ? nullptr : &*step;
}

bool Exchange::done() const {
    const Step* const last = lastRequest();
    if (last != nullptr && !last->role().answerDue) return true;
    const auto answersIt = [&](const Step& step) {
        return step.role().ends && (last == nullptr || (step.request && &steps[*step.request] == last));
    };
    return std::ranges::any_of(steps, answersIt);
}

bool hasTransaction(const Exchange& exchange, U32 xid) {
    return std::ranges::any_of(exchange.steps, [&](const Step& step) { return step.xid == xid; });
}

bool takesMessage(const Exchange& exchange, const Event& event) {
    if (!isRequest(roleOf(event.kind))) return true;
    const Step* const last = exchange.lastRequest();
    if (last != nullptr && repeats(*last, event)) return true;
    const auto isEarlier = [&](const Step& step) { return repeats(step, event); };
    if (!exchange.done() && std::ranges::any_of(exchange.steps, isEarlier)) return true;
    return mayFollow(exchange, event.kind);
}

bool isContinuedBy(const Exchange& exchange, const Event& event) {
    if (roleOf(event.kind).dhcp6 != exchange.dhcp6() || !mayFollow(exchange, event.kind)) return false;
    return event.kind != request || exchange.steps.back().kind == forceRenew || !event.serverId.empty();
}

void addMessage(Exchange& exchange, const Event& event) {
    exchange.end = event.time;
    exchange.selected |= event.selected;
    takeClient(exchange, event);
    if (isRequest(roleOf(event.kind)))
        addRequest(exchange, event);
    else
        addAnswer(exchange, event);
}

}  // namespace DhcpTool
