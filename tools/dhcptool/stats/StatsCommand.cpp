#include "stats/StatsCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <memory>

#include "common/NumberOptions.h"
#include "common/Output.h"
#include "exchange/ExchangeRun.h"
#include "stats/StatsJson.h"
#include "stats/StatsText.h"

namespace DhcpTool {

namespace {

constexpr char statsAbout[] =
    "Counts messages and exchanges by type, server, VLAN, port and client, and\n"
    "measures how long servers take to answer.";
constexpr char statsFooter[] =
    R"(A message that is seen on both sides of a relay agent counts twice as a message,
but as one in exchanges and times. Exchanges count when they end, see "dhcptool follow
--help". An exchange is unanswered if its last request was not answered; the
share is that of the exchanges in which a server had to answer.

Response times run from the last transmission of a request to the answer, on the
server's side of the relay agent if the messages were seen there. A percentile is at most 1.6 %
off. The picture shows how many answers took how long, in steps of 1, 2, 5, 10,
... from the first time above it to the last; each row has its own height.

The tables hold 64 servers, 1024 VLANs, 4096 ports and 8192 clients. If more
appear, those with the fewest exchanges are added up in a row of their own.

Live, all is counted from the start, and shown again every --refresh seconds: on
a terminal in the same place, else as one block, or JSON object, after another.)";

struct StatsArguments {
    ExchangeOptions exchanges;
    std::size_t top = 10;
    double refresh = 5;  ///< s
    bool json = false;
    U64 count = std::numeric_limits<U64>::max();  ///< of messages
};

/// Counts, and shows the counts again and again.
class Counter final : public ExchangeSink {
public:
    explicit Counter(const StatsArguments& arguments)
        : arguments_(arguments), redraws_(!arguments.json && isatty(STDOUT_FILENO) != 0) {}

    void take(const Event& message) override { statistics_.take(message); }
    void take(const Exchange& exchange, const std::vector<Mark>& marks) override { statistics_.take(exchange, marks); }
    void wake() override {
        if (std::chrono::steady_clock::now() < next_) return;
        next_ = std::chrono::steady_clock::now() + refresh();
        show();
    }
    void finish() override { show(); }
    void flush() override { output_.flush(); }
    bool open() const override { return output_.open(); }
    bool wantsMore() const override { return open() && statistics_.messages() < arguments_.count; }

private:
    void show() {
        if (arguments_.json) {
            std::string line;
            JsonWriter json(line);
            writeStatistics(json, statistics_, arguments_.top);
            return output_.line(line);
        }
        if (shown_) output_.write(redraws_ ? "\x1b[H\x1b[2J" : "\n");
        shown_ = true;
        output_.write(statsText(statistics_, {arguments_.top, blocks_}));
    }

    std::chrono::steady_clock::duration refresh() const {
        return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::duration<double>(arguments_.refresh));
    }

    const StatsArguments& arguments_;
    const bool redraws_, blocks_ = localeIsUtf8();
    Statistics statistics_;
    Output output_{false};
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now() + refresh();
    bool shown_ = false;
};

}  // namespace

void addStatsCommand(CLI::App& app) {
    constexpr char group[] = "Output";
    const auto arguments = std::make_shared<StatsArguments>();
    CLI::App* const command = app.add_subcommand("stats", statsAbout)->footer(statsFooter);
    addExchangeOptions(*command, arguments->exchanges);
    command->add_option("--top", arguments->top, "Rows of each table")
        ->type_name("N")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str()
        ->group(group);
    addSeconds(*command, "--refresh", arguments->refresh, 0.25, 86400, "Live: show the counts every SECONDS")
        ->needs("--live")
        ->capture_default_str()
        ->group(group);
    command->add_flag("--json", arguments->json, "One JSON object at the end; live, one every --refresh\nseconds")
        ->group(group);
    addCount(*command, arguments->count, "Stop after N messages")->group(group);
    command->callback([arguments] {
        const auto counter = std::make_unique<Counter>(*arguments);
        runExchanges(arguments->exchanges, *counter);
    });
}

}  // namespace DhcpTool
