#include "follow/FollowCommand.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <memory>

#include "common/NumberOptions.h"
#include "common/Output.h"
#include "exchange/ExchangeRun.h"
#include "follow/ExchangeJson.h"
#include "follow/ExchangeLine.h"
#include "view/ViewOptions.h"

namespace DhcpTool {

namespace {

constexpr char followAbout[] =
    "Prints a line for each exchange of a client with its servers, instead of one\n"
    "for each message, and marks what went wrong.";
constexpr char followFooter[] =
    R"(A line starts with the time of the first message, the client, the VLAN and the
port (circuit-id or interface-id). The messages come with the times between
them: after an answer the time since its request, after a request the time since
the answer before it. "x3 in 9.1s" is a message that was sent 3 times. Address,
lease, server and relay agent follow, with the delays of the relay agent to the
server (>) and back (<), then "!" and what went wrong: no answer, a NAK or
DHCPv6 status, a declined address, several servers, an answer without option 82,
and so on.

The copies of a message on both sides of a relay agent are one message.

Lines are in the order in which exchanges end: 3 s after the last answer, or
after --timeout without one; all others at the end of the capture. A client can
have 16 open exchanges, all clients together 8192. Above that the oldest ones
are printed early, those without an answer with the mark "not followed to its
end".

A filter selects exchanges with at least one message that fits.

JSON: one object an exchange. share/DhcpLib/dhcptool.schema.json describes all
members.)";

struct FollowArguments {
    ExchangeOptions exchanges;
    bool problems = false;
    bool json = false;
    U64 count = std::numeric_limits<U64>::max();  ///< of exchanges
    TimeForm time = TimeForm::absolute;
    bool coloured = false;
};

/// Prints exchanges.
class Follower final : public ExchangeSink {
public:
    explicit Follower(const FollowArguments& arguments) : arguments_(arguments), time_(arguments.time) {}

    void take(const Exchange& exchange, const std::vector<Mark>& marks) override {
        if (!wantsMore() || (arguments_.problems && marks.empty())) return;
        ++printed_;
        line_.clear();
        if (arguments_.json) {
            JsonWriter json(line_);
            writeExchange(json, exchange, marks);
            return output_.line(line_);
        }
        time_.append(line_, exchange.start);
        appendExchange(line_, exchange, marks, arguments_.coloured);
        output_.line(line_);
    }
    void flush() override { output_.flush(); }
    bool open() const override { return output_.open(); }
    bool wantsMore() const override { return open() && printed_ < arguments_.count; }

private:
    const FollowArguments& arguments_;
    TimeText time_;
    std::string line_;
    U64 printed_ = 0;
    Output output_{false};
};

}  // namespace

void addFollowCommand(CLI::App& app) {
    constexpr char group[] = "Output";
    const auto arguments = std::make_shared<FollowArguments>();
    CLI::App* const command = app.add_subcommand("follow", followAbout)->footer(followFooter);
    addExchangeOptions(*command, arguments->exchanges);
    command->add_flag("--problems", arguments->problems, "Print only exchanges in which something went wrong")
        ->group(group);
    command->add_flag("--json", arguments->json, "One JSON object per exchange, each on its own line")->group(group);
    addCount(*command, arguments->count, "Stop after N exchanges")->group(group);
    addTimeOption(*command, arguments->time);
    addColorOption(*command, arguments->coloured);
    command->callback([arguments] {
        Follower follower(*arguments);
        runExchanges(arguments->exchanges, follower);
    });
}

}  // namespace DhcpTool
