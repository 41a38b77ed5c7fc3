#include "leasequery/LeaseQueryCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "common/AddressOption.h"
#include "common/Output.h"
#include "leasequery/LeaseQueryClient.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Asks a DHCP server which lease a client or an address has (DHCPLEASEQUERY, RFC 4388) and prints what it says.";
constexpr char footer[] =
    "The query goes from UDP port 67 of the relay address, to which the server replies, so that the address must be\n"
    "one of this machine and the port free; port 67 takes CAP_NET_BIND_SERVICE. Replies from another address than the\n"
    "server's, with another transaction id, or that are malformed are ignored. What the server does not tell is left\n"
    "out of the lines, and null with --json.\n"
    "Exit status: 0 the server knows the client or address, its state is active or unassigned; 1 wrong usage, no\n"
    "route, or no socket; 3 the state is unknown; 4 no answer.";

/// The exit status, beside those of all commands.
enum Status { leaseKnown = 0, leaseUnknown = 3, noAnswer = 4 };

struct LeaseQueryArguments {
    LeaseSubject subject;
    Kitnet::IpAddr server;
    std::optional<Kitnet::IpAddr> giaddr;
    unsigned timeout = 2, retries = 2;
    bool json = false;
};

Status ask(const LeaseQueryArguments& arguments) {
    LeaseQueryClient client(arguments.server,
                            arguments.giaddr ? *arguments.giaddr : localAddressTowards(arguments.server));
    const auto answer = client.ask(arguments.subject, std::chrono::seconds(arguments.timeout), arguments.retries);
    if (!answer) {
        complain("no answer from " + Kcore::textOf(arguments.server) +
                 ", other datagrams: " + std::to_string(client.ignored()));
        return noAnswer;
    }
    Output output(false);
    output.line(arguments.json ? answer->json() : answer->text());
    output.flush();
    return answer->state == LeaseState::unknown ? leaseUnknown : leaseKnown;
}

}  // namespace

void addLeaseQueryCommand(CLI::App& app, int& status) {
    const auto arguments = std::make_shared<LeaseQueryArguments>();
    CLI::App* const command = app.add_subcommand("leasequery", about)->footer(footer);
    CLI::App* const subject = command->add_option_group("Subject", "Whose lease");
    addAddress<Kitnet::EthAddr>(*subject, "--mac", arguments->subject, "The client whose lease is asked for");
    addAddress<Kitnet::IpAddr>(*subject, "--ip", arguments->subject, "The address whose lease is asked for");
    subject->require_option(1);
    addAddress<Kitnet::IpAddr>(*command, "--server", arguments->server, "The DHCP server")->required();
    addAddress<Kitnet::IpAddr>(*command, "--giaddr", arguments->giaddr,
                               "Relay address; by default the one from which datagrams go to the server");
    command->add_option("--timeout", arguments->timeout, "How long to wait after each query")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    command->add_option("--retries", arguments->retries, "How often to ask again")
        ->type_name("N")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    command->add_flag("--json", arguments->json, "Print one JSON object");
    command->callback([arguments, &status] { status = ask(*arguments); });
}

}  // namespace DhcpTool
