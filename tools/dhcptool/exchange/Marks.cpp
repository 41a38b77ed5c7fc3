#include "exchange/Marks.h"

#include <algorithm>

#include "common/Printable.h"
#include "exchange/ExchangeText.h"

namespace DhcpTool {

namespace {

using enum MessageKind;

/// ` "text"` with what a server says, or nothing.
std::string quoted(std::string_view text) { return text.empty() ? std::string() : ' ' + quotedText(text); }

/// Collects the marks of one exchange.
class Marker {
public:
    explicit Marker(const Exchange& exchange) : exchange_(exchange) {}

    std::vector<Mark> take() {
        answers();
        declines();
        servers();
        relayAgent();
        repetitions();
        if (exchange_.incomplete) add(MarkKind::incomplete, "not followed to its end");
        std::ranges::stable_sort(marks_, {}, &Mark::kind);
        return std::move(marks_);
    }

private:
    void add(MarkKind kind, std::string text) { marks_.push_back({kind, std::move(text)}); }

    std::string byServer(const Step& step) const {
        return step.server ? " from " + serverText(exchange_.servers[*step.server]) : std::string();
    }

    void answers() {
        for (const Step& step : exchange_.steps) {
            if (step.kind == nak) add(MarkKind::nak, "NAK" + byServer(step) + refused() + quoted(step.text));
            if (step.role().answerTo != 0 && !step.request)
                add(MarkKind::requestNotSeen, std::string(step.role().name) + " without a request");
        }
        for (const Exchange::Status& status : exchange_.statuses)
            add(MarkKind::status,
                std::string(roleOf(status.kind).name) + ' ' + statusText(status.code) + quoted(status.text));
        if (!exchange_.done()) unfinished();
    }

    std::string refused() const {
        return exchange_.requested.empty() ? std::string() : " for " + addressesText(exchange_.requested);
    }

    void unfinished() {
        const Step* const last = exchange_.lastRequest();
        if (last == nullptr) return;
        const auto offersIt = [&](const Step& s) { return s.request && &exchange_.steps[*s.request] == last; };
        const auto offered = std::ranges::find_if(exchange_.steps, offersIt);
        if (offered == exchange_.steps.end()) return add(MarkKind::notAnswered, unanswered(*last));
        if (exchange_.statuses.empty())
            add(MarkKind::notTaken, std::string(offered->role().name) + " not followed by a REQUEST");
    }

    std::string unanswered(const Step& step) const {
        std::string text = stepName(step) + " not answered";
        const Sighting& seen = step.clientSide();
        if (seen.count > 1)
            text.append(" (")
                .append(std::to_string(seen.count))
                .append(" tries in ")
                .append(durationText(timeBetween(seen.first, seen.last)))
                .append(")");
        if (!exchange_.otherServer.isUsable()) return text.append(", no server answers in this VLAN");
        if (exchange_.servers.empty())
            text.append(", ").append(Kcore::textOf(exchange_.otherServer)).append(" answers others");
        return text;
    }

    void declines() {
        for (const Step& step : exchange_.steps)
            if (contains(kinds(decline, decline6), step.kind))
                add(MarkKind::declined, addressesText(exchange_.requested) + " declined, another host uses it");
    }

    void servers() {
        const auto& all = exchange_.servers;
        const auto near = std::ranges::count_if(all, &ExchangeServer::near);
        const auto far = std::ranges::count_if(all, &ExchangeServer::far);
        if (std::max(near, far) < 2) return;
        std::string text = std::to_string(std::max(near, far)) + " servers: ";
        for (const ExchangeServer& server : all) {
            if (!(near > 1 ? server.near : server.far)) continue;
            if (!text.ends_with(": ")) text.append(", ");
            text.append(serverText(server));
            if (server.offered.isUsable()) text.append(" offers ").append(Kcore::textOf(server.offered));
            if (server.id == exchange_.chosenServer) text.append(" (chosen)");
        }
        add(MarkKind::severalServers, std::move(text));
    }

    void relayAgent() {
        if (!exchange_.port.empty() && !exchange_.farPort.empty() && exchange_.port != exchange_.farPort)
            add(MarkKind::relayInfoChanged,
                "relay agent changes circuit-id " + textOrHex(exchange_.port) + " to " + textOrHex(exchange_.farPort));
        for (const Step& step : exchange_.steps) {
            const std::string name(step.role().name);
            if (step.lostRelayInfo)
                add(MarkKind::relayInfoLost, name + " lacks the " + relayInfoName() + " of its request");
            if (!step.request || !step.far.seen() || step.near.seen()) continue;
            const Step& request = exchange_.steps[*step.request];
            if (request.near.seen() && request.far.seen())
                add(MarkKind::notDelivered, name + " does not pass the relay agent");
        }
    }

    std::string relayInfoName() const { return exchange_.dhcp6() ? "interface-id" : "option 82"; }

    void repetitions() {
        for (const Step& step : exchange_.steps) {
            const Sighting& seen = step.clientSide();
            if (step.role().answerTo == 0) {
                // The mark of an unanswered request has the number of tries already.
                const bool marked = &step == exchange_.lastRequest() && isUnanswered();
                if (seen.count > 1 && !marked)
                    add(MarkKind::retransmitted, stepName(step) + " sent " + std::to_string(seen.count) + " times");
                continue;
            }
            if (!step.request) continue;
            const Step& request = exchange_.steps[*step.request];
            const Sighting& asked = step.near.seen() ? request.near : request.far;
            if (seen.count > std::max(asked.count, request.clientSide().count))
                add(MarkKind::answeredTwice,
                    std::string(step.role().name) + byServer(step) + " " + std::to_string(seen.count) + " times");
        }
    }

    bool isUnanswered() const { return std::ranges::count(marks_, MarkKind::notAnswered, &Mark::kind) != 0; }

    const Exchange& exchange_;
    std::vector<Mark> marks_;
};

}  // namespace

std::vector<Mark> marksOf(const Exchange& exchange) { return Marker(exchange).take(); }

}  // namespace DhcpTool
