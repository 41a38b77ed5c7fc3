#include "follow/ExchangeLine.h"

#include <algorithm>

#include "Kcore/Text.h"
#include "common/Printable.h"
#include "exchange/ExchangeText.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

/// The time in front of a message: how long the server took to answer, or the client to go on.
std::optional<Nanoseconds> timeBefore(const Exchange& exchange, std::size_t at) {
    if (at == 0) return std::nullopt;
    const Step& step = exchange.steps[at];
    if (step.wait) return step.wait;
    if (step.serverWait && !step.near.seen()) return step.serverWait;
    const Step& before = step.request ? exchange.steps[*step.request] : exchange.steps[at - 1];
    return timeBetween(before.clientSide().last, step.clientSide().first);
}

/// The server that the client chose, or the only one.
const ExchangeServer* serverOf(const Exchange& exchange) {
    const auto chosen = std::ranges::find(exchange.servers, exchange.chosenServer, &ExchangeServer::id);
    if (chosen != exchange.servers.end()) return &*chosen;
    return exchange.servers.size() == 1 ? &exchange.servers.front() : nullptr;
}

/// The delay of the relay agent for the first request or the first answer; unset if it was not seen on both sides.
std::optional<Nanoseconds> relayDelay(const Exchange& exchange, bool answer) {
    for (const Step& step : exchange.steps) {
        if ((step.role().answerTo != 0) != answer || !step.near.seen() || !step.far.seen()) continue;
        return answer ? timeBetween(step.far.first, step.near.first) : timeBetween(step.near.first, step.far.first);
    }
    return std::nullopt;
}

/// Assembles a line word by word.
class Writer {
public:
    Writer(std::string& out, const Exchange& exchange, bool coloured)
        : out_(out), exchange_(exchange), coloured_(coloured) {}

    void write(const std::vector<Mark>& marks) {
        client();
        for (std::size_t at = 0; at < exchange_.steps.size(); ++at) step(at);
        addresses();
        if (const ExchangeServer* const server = serverOf(exchange_)) word("server").append(serverText(*server));
        relay();
        if (marks.empty()) return;
        out_.append(coloured_ ? " \x1b[1;31m! " : " ! ");
        for (const Mark& mark : marks) out_.append(&mark == &marks.front() ? "" : "; ").append(mark.text);
        if (coloured_) out_.append("\x1b[0m");
    }

private:
    /// Appends a word and a blank, and returns the line for what comes next.
    std::string& word(std::string_view text) {
        if (!out_.empty()) out_.push_back(' ');
        return out_.append(text).append(" ");
    }

    void client() {
        if (!out_.empty()) out_.push_back(' ');
        out_.append(clientText(exchange_));
        if (!exchange_.hostname.empty()) word("hostname").append(quotedText(exchange_.hostname));
        if (!exchange_.interface.empty()) word("interface").append(exchange_.interface);
        word("vlan").append(std::to_string(exchange_.vlan));
        if (const std::string& port = exchange_.anyPort(); !port.empty()) word("port").append(textOrHex(port));
    }

    void step(std::size_t at) {
        const Step& step = exchange_.steps[at];
        if (at != 0)
            word("->");
        else
            out_.push_back(' ');
        out_.append(stepName(step));
        if (exchange_.servers.size() > 1 && step.server)
            word("from").append(Kcore::textOf(exchange_.servers[*step.server].address));
        if (const auto time = timeBefore(exchange_, at)) out_.append(" ").append(durationText(*time));
        const Sighting& seen = step.clientSide();
        if (seen.count == 1) return;
        out_.append(" x").append(std::to_string(seen.count));
        word("in").append(durationText(timeBetween(seen.first, seen.last)));
    }

    void addresses() {
        if (exchange_.assigned.empty()) return;
        word("address").append(addressesText(exchange_.assigned));
        if (const auto seconds = exchange_.assigned.front().seconds) appendLifetime(word("lease"), *seconds);
    }

    void relay() {
        if (!exchange_.relay.isUsable()) return;
        word("relay").append(Kcore::textOf(exchange_.relay));
        if (const auto delay = relayDelay(exchange_, false)) out_.append(" >").append(durationText(*delay));
        if (const auto delay = relayDelay(exchange_, true)) out_.append(" <").append(durationText(*delay));
    }

    std::string& out_;
    const Exchange& exchange_;
    const bool coloured_;
};

}  // namespace

void appendExchange(std::string& out, const Exchange& exchange, const std::vector<Mark>& marks, bool coloured) {
    Writer(out, exchange, coloured).write(marks);
}

}  // namespace DhcpTool
