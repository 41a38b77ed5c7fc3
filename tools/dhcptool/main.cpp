#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "capture/Capture.h"
#include "cli/Suggestion.h"
#include "common/ExitStatus.h"
#include "common/Output.h"
#include "common/Printable.h"
#include "follow/FollowCommand.h"
#include "leasequery/LeaseQueryCommand.h"
#include "relay/RelayCommand.h"
#include "snoop/SnoopCommand.h"
#include "stats/StatsCommand.h"

namespace DhcpTool {

namespace {

constexpr Cli::Example examples[] = {
    {"Show the DHCP messages of a capture:", "dhcptool lease.pcap"},
    {"Show the exchanges in which something went wrong:", "dhcptool follow -r lease.pcap --problems"},
    {"Show how long the servers on an interface take to answer:", "dhcptool stats -i eth0"},
    {"Show what arrives on an interface, and keep the frames:", "dhcptool snoop -i eth0 --write frames.pcap"},
    {"Ask a server who has an address:", "dhcptool leasequery --server 192.0.2.1 --ip 192.0.2.100"},
    {"Rewrite a capture as a relay agent does:",
     "dhcptool relay -r lease.pcap -w relayed.pcap --circuit-id Ethernet1 --remote-id sw1"},
};
constexpr Cli::Program program{1, exitMeanings, examples, "dhcprelay(8), tcpdump(8), pcap-filter(7)"};

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

/// Whether `argument` is an option of dhcptool itself, not of a command.
bool isGlobalOption(const CLI::App& app, const std::string& argument) {
    return app.get_option_no_throw(argument.substr(0, argument.find('='))) != nullptr;
}

/// The arguments, with `snoop` before a first one that is a file or an option of a command. Throws CLI::ParseError if
/// it is neither, and no command.
std::vector<std::string> completed(const CLI::App& app, std::vector<std::string> arguments) {
    const auto names = commandNames(app);
    if (arguments.empty() || std::ranges::count(names, arguments.front()) != 0) return arguments;
    const std::string& first = arguments.front();
    if (isGlobalOption(app, first)) return arguments;
    std::error_code ignored;
    if (first.starts_with('-') || std::filesystem::exists(first, ignored)) {
        arguments.insert(arguments.begin(), "snoop");
        return arguments;
    }
    const auto meant = Cli::closest(first, names);
    throw CLI::ParseError(
        quotedText(first) + " is neither a command nor a file" + (meant ? " (did you mean " + *meant + "?)" : ""),
        CLI::ExitCodes::ExtrasError);
}

int run(int argc, char** argv) {
    int status = done;
    CLI::App app("Shows and rewrites DHCP traffic, and queries leases.", "dhcptool");
    Cli::describe(app, program);
    app.require_subcommand(1);
    addSnoopCommand(app);
    addFollowCommand(app);
    addStatsCommand(app);
    addLeaseQueryCommand(app, status);
    addRelayCommand(app);
    // Not earlier: commands inherit it.
    app.footer("dhcptool FILE is the same as dhcptool snoop FILE.\n\ndhcptool COMMAND --help describes a command.");
    try {
        auto arguments = completed(app, {argv + 1, argv + argc});
        std::ranges::reverse(arguments);  // as parse() wants them
        app.parse(std::move(arguments));
    } catch (const CLI::Success& help) {
        Cli::answer(app, help);
        return done;
    } catch (const CLI::ParseError& error) {
        complain(harmless(error.what()) + Cli::optionHint(app) + "; see --help");
        return failed;
    }
    return status;
}

}  // namespace

}  // namespace DhcpTool

int main(int argc, char** argv) {
    using namespace DhcpTool;
    try {
        return run(argc, argv);
    } catch (const CaptureError& error) {
        complain(error.what());
        return badInput;
    } catch (const std::exception& error) {
        complain(harmless(error.what()));
        return failed;
    }
}
