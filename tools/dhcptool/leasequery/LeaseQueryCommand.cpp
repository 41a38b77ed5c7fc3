#include "leasequery/LeaseQueryCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "common/AddressOption.h"
#include "common/ExitStatus.h"
#include "common/Output.h"
#include "leasequery/LeaseQueryClient.h"

namespace DhcpTool {

namespace {

constexpr char leaseQueryAbout[] =
    "Asks a DHCP server for the lease of a client or an address (DHCPLEASEQUERY, RFC 4388) and prints the reply.";
constexpr char leaseQueryFooter[] =
    R"(The query is sent from UDP port 67 of the relay address, to which the server replies. So this must be an address of
this machine, the port must be free, and CAP_NET_BIND_SERVICE is required. Replies from another address, with another
transaction id, about another client or address, or malformed ones are ignored; if there is no other, the reasons are
printed. Fields that the reply does not contain are left out; with --json they are null.)";

struct LeaseQueryArguments {
    LeaseSubject subject;
    Kitnet::IpAddr server;
    std::optional<Kitnet::IpAddr> giaddr;
    unsigned timeout = 2, retries = 2;
    bool json = false;
};

/// A line for each reason why a datagram was no answer, as in the counts of snoop.
std::string reasons(const LeaseQueryClient& client) {
    std::string text;
    for (const auto& [reason, count] : client.ignored())
        text += "\n  " + std::to_string(count) + "  " + std::string(reason);
    return text.empty() ? text : "; other datagrams:" + text;
}

ExitStatus ask(const LeaseQueryArguments& arguments) {
    LeaseQueryClient client(arguments.server,
                            arguments.giaddr ? *arguments.giaddr : localAddressTowards(arguments.server));
    const auto answer = client.ask(arguments.subject, std::chrono::seconds(arguments.timeout), arguments.retries);
    if (!answer) {
        complain("no answer from " + Kcore::textOf(arguments.server) + reasons(client));
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
    CLI::App* const command = app.add_subcommand("leasequery", leaseQueryAbout)->footer(leaseQueryFooter);
    CLI::App* const subject = command->add_option_group("Subject", "Client or address to ask for");
    addAddress<Kitnet::EthAddr>(*subject, "--mac", arguments->subject, "MAC address of the client");
    addAddress<ClientId>(*subject, "--client-id", arguments->subject, "Identifier of the client (option 61)")
        ->type_name("HEX");
    addAddress<Kitnet::IpAddr>(*subject, "--ip", arguments->subject, "Leased address");
    subject->require_option(1);
    addAddress<Kitnet::IpAddr>(*command, "--server", arguments->server, "Address of the DHCP server")->required();
    addAddress<Kitnet::IpAddr>(*command, "--giaddr", arguments->giaddr,
                               "Relay address; default: the local address of the route to the server");
    command
        ->add_option(
            "--timeout", arguments->timeout,
            "Time to wait after the first query; doubles with each repetition, up to 64 s, and varies by a tenth")
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
