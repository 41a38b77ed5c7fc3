#include "exchange/ExchangeTracker.h"

#include <algorithm>

#include "exchange/ExchangeSteps.h"

namespace DhcpTool {

ExchangeTracker::ExchangeTracker(const TrackerSettings& settings, std::function<void(const Exchange&)> report)
    : settings_(settings), report_(std::move(report)) {}

void ExchangeTracker::take(const Event& event) {
    timeIs(event.time);
    const auto open = exchangeOf(event);
    addMessage(open->exchange, event);
    touch(open);
}

/// The clock adds up the steps forward in time, so that one wrong time does not keep the exchanges after it open.
void ExchangeTracker::timeIs(Nanoseconds now) {
    const Nanoseconds step = latest_ ? timeBetween(*latest_, now) : Nanoseconds(0);
    latest_ = now;
    if (step.count() > 0) clock_ += static_cast<U64>(std::min(step, settings_.timeout + settings_.linger).count());
    const auto reportSince = [&](Opens& opens, Nanoseconds patience) {
        const auto most = static_cast<U64>(patience.count());
        while (!opens.empty() && clock_ - opens.front().touched >= most) report(opens.begin());
    };
    reportSince(done_, settings_.linger);
    reportSince(pending_, settings_.timeout);
}

void ExchangeTracker::finish() {
    while (!done_.empty() || !pending_.empty()) {
        const bool doneIsOlder = pending_.empty() || (!done_.empty() && age(done_.front()) >= age(pending_.front()));
        report(doneIsOlder ? done_.begin() : pending_.begin());
    }
}

/// The client's newest open exchange for which `wanted` holds.
template <class Wanted>
std::optional<ExchangeTracker::Opens::iterator> ExchangeTracker::newest(std::string_view client, Wanted wanted) {
    std::optional<Opens::iterator> found;
    const auto [first, last] = index_.equal_range(client);  // in the order of insertion
    for (auto entry = first; entry != last; ++entry)
        if (wanted(entry->second->exchange)) found = entry->second;
    return found;
}

ExchangeTracker::Opens::iterator ExchangeTracker::exchangeOf(const Event& event) {
    const bool dhcp6 = roleOf(event.kind).dhcp6;
    const auto sameTransaction = [&](const Exchange& exchange) {
        return exchange.dhcp6() == dhcp6 && hasTransaction(exchange, event.xid);
    };
    if (const auto open = newest(event.client, sameTransaction)) {
        if (takesMessage((*open)->exchange, event)) return *open;
        report(*open);
    } else {
        const auto continued = [&](const Exchange& exchange) { return isContinuedBy(exchange, event); };
        if (const auto earlier = newest(event.client, continued)) return *earlier;
    }
    return openFor(event);
}

ExchangeTracker::Opens::iterator ExchangeTracker::openFor(const Event& event) {
    makeRoom(event.client);
    const auto open = pending_.emplace(pending_.end());
    open->exchange.start = event.time;
    open->exchange.client = event.client;
    open->entry = index_.emplace(open->exchange.client, open);
    return open;
}

void ExchangeTracker::makeRoom(std::string_view client) {
    const auto [first, last] = index_.equal_range(client);
    if (static_cast<std::size_t>(std::distance(first, last)) >= mostPerClient) reportEarly(first->second);
    if (index_.size() >= settings_.mostOpen) reportEarly(done_.empty() ? pending_.begin() : done_.begin());
}

void ExchangeTracker::reportEarly(Opens::iterator open) {
    if (!open->done) open->exchange.incomplete = true;
    report(open);
}

void ExchangeTracker::touch(Opens::iterator open) {
    Opens& from = open->done ? done_ : pending_;
    open->done = open->exchange.done();
    open->touched = clock_;
    Opens& to = open->done ? done_ : pending_;
    to.splice(to.end(), from, open);
    if (done_.size() > settings_.mostDone) report(done_.begin());
}

/// The server that answered last in the exchange's VLAN, this exchange included.
Kitnet::IpGenAddr ExchangeTracker::answeringServer(const Exchange& exchange) {
    Kitnet::IpGenAddr& server = answering_[{exchange.dhcp6(), exchange.vlan}];
    if (!exchange.servers.empty()) server = exchange.servers.back().address;
    return server;
}

void ExchangeTracker::report(Opens::iterator open) {
    open->exchange.otherServer = answeringServer(open->exchange);
    report_(open->exchange);
    index_.erase(open->entry);
    (open->done ? done_ : pending_).erase(open);
}

}  // namespace DhcpTool
