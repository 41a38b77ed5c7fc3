#include "stats/Statistics.h"

#include "exchange/ExchangeText.h"

namespace DhcpTool {

void ExchangeTally::add(const ExchangeTally& other) {
    exchanges += other.exchanges;
    asked += other.asked;
    notAnswered += other.notAnswered;
    problems += other.problems;
}

void ServerTally::add(const ServerTally& other) {
    exchanges += other.exchanges;
    refusals += other.refusals;
    offers.add(other.offers);
    replies.add(other.replies);
}

void Statistics::take(const Event& message) {
    ++messages_;
    ++kinds_[static_cast<U8>(message.kind)];
    if (!start_) start_ = message.time;
    end_ = message.time;
}

void Statistics::take(const Exchange& exchange, const std::vector<Mark>& marks) {
    ExchangeTally one{1, 0, 0, marks.empty() ? U64{0} : U64{1}};
    for (const Step& step : exchange.steps)
        if (step.role().answerDue) one.asked = 1;
    for (const Mark& mark : marks) {
        ++marks_[static_cast<U8>(mark.kind)];
        if (mark.kind == MarkKind::notAnswered) one.notAnswered = 1;
    }
    all_.add(one);
    vlans_.row(std::to_string(exchange.vlan)).add(one);
    if (const std::string& port = exchange.anyPort(); !port.empty()) ports_.row(port).add(one);
    clients_.row(clientText(exchange)).add(one);
    countServers(exchange);
}

void Statistics::countServers(const Exchange& exchange) {
    for (std::size_t at = 0; at < exchange.servers.size(); ++at) {
        ServerTally& tally = servers_.row(Kcore::textOf(exchange.servers[at].address));
        ++tally.exchanges;
        for (const Step& step : exchange.steps) {
            if (step.server != at) continue;
            if (step.refuses) ++tally.refusals;
            if (const auto time = step.serverWait ? step.serverWait : step.wait)
                (step.role().ends ? tally.replies : tally.offers).add(*time);
        }
    }
}

}  // namespace DhcpTool
