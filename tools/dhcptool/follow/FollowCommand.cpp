#include "follow/FollowCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "common/Output.h"
#include "exchange/EventReader.h"
#include "exchange/ExchangeTracker.h"
#include "follow/ExchangeLine.h"
#include "message/Decoder.h"
#include "view/TimeText.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Shows exchanges instead of messages: a line for all that a client and the\n"
    "servers send from the first request to the last answer, with marks for what\n"
    "went wrong.";

struct FollowArguments {
    std::string file;
    bool problems = false;
    double timeout = 30;  ///< s
};

void follow(const FollowArguments& arguments) {
    CaptureReader capture(arguments.file);
    Output output(capture.size() == 0);
    Decoder decoder(Ports{{Kitnet::IntfId("Ethernet1"), {}}});
    EventReader reader;
    TrackerSettings settings;
    settings.timeout = std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(arguments.timeout));
    ExchangeTracker tracker(settings, [&](const Exchange& exchange) {
        const auto marks = marksOf(exchange);
        if (arguments.problems && marks.empty()) return;
        std::string line = timeText(std::chrono::floor<std::chrono::seconds>(exchange.start));
        appendExchange(line, exchange, marks, false);
        output.line(line);
    });
    while (const auto frame = capture.next()) {
        const Arrival arrival{frame->number, frame->time, Kitnet::globalPktManager().newPkt(frame->bytes),
                              frame->sentBytes, Kitnet::IntfId("Ethernet1")};
        if (const Event* const event = reader.read(decoder.decode(arrival))) tracker.take(*event);
    }
    tracker.finish();
    output.flush();
}

}  // namespace

void addFollowCommand(CLI::App& app) {
    const auto arguments = std::make_shared<FollowArguments>();
    CLI::App* const command = app.add_subcommand("follow", about);
    command->add_option("-r,--read", arguments->file, "Capture file, pcap or pcapng; - is the standard input")
        ->type_name("FILE");
    command->add_flag("--problems", arguments->problems, "Show only exchanges that have a mark");
    command->add_option("--timeout", arguments->timeout, "End an unfinished exchange after SECONDS without a message")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    command->callback([arguments] { follow(*arguments); });
}

}  // namespace DhcpTool
