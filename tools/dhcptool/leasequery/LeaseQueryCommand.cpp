#include "leasequery/LeaseQueryCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "common/AddressOption.h"
#include "common/ExitStatus.h"
#include "common/Output.h"
#include "leasequery/LeaseQueryClient.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Asks a DHCP server for the lease of a client or an address (DHCPLEASEQUERY, RFC 4388) and prints the reply.";
constexpr char footer[] =
    R"(The query is sent from UDP port 67 of the relay address, to which the server replies. So this must be an address of
this machine, the port must be free, and CAP_NET_BIND_SERVICE is required. Malformed replies, replies from another
address and replies with another transaction id are ignored. Fields that the reply does not contain are left out;
with --json they are null.)";

struct LeaseQueryArguments {
    LeaseSubject subject;
    Kitnet::IpAddr server;
    std::optional<Kitnet::IpAddr> giaddr;
    unsigned timeout = 2, retries = 2;
    bool json = false;
};

ExitStatus ask(const LeaseQueryArguments& arguments) {
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
    return answer->state == LeaseState::unknown ? leaseUnknown : done;
}

}  // namespace

void addLeaseQueryCommand(CLI::App& app, int& status) {
    const auto arguments = std::make_shared<LeaseQueryArguments>();
    CLI::App* const command = app.add_subcommand("leasequery", about)->footer(footer);
    CLI::App* const subject = command->add_option_group("Subject", "Client or address to ask for");
    addAddress<Kitnet::EthAddr>(*subject, "--mac", arguments->subject, "MAC address of the client");
    addAddress<Kitnet::IpAddr>(*subject, "--ip", arguments->subject, "Leased address");
    subject->require_option(1);
    addAddress<Kitnet::IpAddr>(*command, "--server", arguments->server, "Address of the DHCP server")->required();
    addAddress<Kitnet::IpAddr>(*command, "--giaddr", arguments->giaddr,
                               "Relay address; default: the local address of the route to the server");
    command->add_option("--timeout", arguments->timeout, "Time to wait after each query")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    command->add_option("--retries", arguments->retries, "Number of repeated queries")
        ->type_name("N")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    command->add_flag("--json", arguments->json, "Print one JSON object");
    command->callback([arguments, &status] { status = ask(*arguments); });
}

}  // namespace DhcpTool
