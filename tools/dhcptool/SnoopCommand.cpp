#include "SnoopCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <memory>

#include "Output.h"
#include "Progress.h"
#include "Snoop.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Parses each frame of a capture as a DHCP snooping agent does and prints a line for each DHCP, BOOTP or\n"
    "DHCPv6 message. Counts, and why frames were rejected, follow on stderr.";
constexpr char footer[] =
    "With --json each message is an object: \"frame\", then every attribute of the parser under its own name. Byte\n"
    "strings from the wire are lower-case hex; dhcpMsgType and paramReqList, which the parser makes, are text.\n"
    "Addresses are text, times numbers of seconds.\n"
    "A DHCPv6 object goes on with \"messageType\", \"xid\", \"clientId\", \"serverId\" (\"data\"; \"type\" LLT, EN, LL "
    "or UUID\n"
    "and its fields, \"time\" counting from 2000), \"ia\" (\"type\", \"iaid\", \"t1\", \"t2\", \"addresses\", "
    "\"prefixes\"),\n"
    "\"interfaceId\" and \"remoteId\" (\"data\", and what it says where it decodes) of the message itself, and "
    "\"relay\": the\n"
    "relay messages around it, outermost first (\"messageType\", \"hopCount\", \"linkAddr\", \"peerAddr\", "
    "\"interfaceId\",\n"
    "\"remoteId\"). What is absent is null or an empty list; what is too short for its layout is absent.\n"
    "Exit status: 0 done, 1 wrong usage or no place for the output, 2 the capture cannot be read to its end.";

const std::map<std::string, Bridging::SwitchportMode>& modes() {
    using enum Bridging::SwitchportMode;
    static const std::map<std::string, Bridging::SwitchportMode> all{
        {"access", access}, {"dot1q-tunnel", dot1qTunnel}, {"trunk", trunk}};
    return all;
}

struct SnoopArguments {
    std::string file;
    std::string interface = "Ethernet1";
    PortSettings port;
    SnoopSettings settings;
};

void printMessages(CaptureReader& capture, const Kitnet::IntfId& intf, Snooper& snooper, Output& output) {
    Progress progress(capture.size());
    while (output.open()) {
        const auto frame = capture.next();
        if (!frame) return;
        const Arrival arrival{frame->number, frame->time, Kitnet::globalPktManager().newPkt(frame->bytes), intf};
        if (const auto line = snooper.take(arrival)) {
            progress.hide();
            output.line(*line);
        }
        progress.at(capture.position());
    }
}

void snoop(const SnoopArguments& arguments) {
    CaptureReader capture(arguments.file);
    const Kitnet::IntfId intf(arguments.interface);
    SnoopSettings settings = arguments.settings;
    settings.ports[intf] = arguments.port;
    Snooper snooper(settings);
    Output output(capture.size() == 0);
    std::exception_ptr cutShort;
    try {
        printMessages(capture, intf, snooper, output);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    output.flush();
    if (output.open()) complain(snooper.counts().text());
    if (cutShort) std::rethrow_exception(cutShort);
}

}  // namespace

void addSnoopCommand(CLI::App& app) {
    const auto arguments = std::make_shared<SnoopArguments>();
    SnoopSettings& settings = arguments->settings;
    CLI::App* const command = app.add_subcommand("snoop", about)->footer(footer);
    command->add_option("-r,--read", arguments->file, "Capture file, pcap or pcapng; - is the standard input")
        ->type_name("FILE")
        ->required();
    command->add_flag("--json", settings.json, "Print one JSON object a line");
    command->add_option("--interface", arguments->interface, "Switch port on which the frames arrive")
        ->type_name("NAME")
        ->check(
            [](const std::string& name) {
                return Kitnet::IntfId::isValidName(name) ? std::string() : "no interface name: " + name;
            },
            "")
        ->capture_default_str();
    command->add_option("--native-vlan", arguments->port.nativeVlan, "VLAN of frames without a tag")
        ->type_name("VLAN")
        ->check(CLI::Range(1, 4094))
        ->capture_default_str();
    command
        ->add_option_function<std::string>(
            "--switchport-mode",
            [&port = arguments->port](const std::string& name) { port.switchportMode = modes().at(name); },
            "What the port makes of tags")
        ->type_name("MODE")
        ->check(CLI::IsMember(modes()))
        ->default_str("access");
    command->add_option("--trace", settings.traceLevel, "Show the library's trace lines up to LEVEL, 1 to 4, on stderr")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 9));
    command->add_flag("--keep-state", settings.keepState,
                      "Use one parser for all frames: what a frame does not set stays from those before");
    command->callback([arguments] { snoop(*arguments); });
}

}  // namespace DhcpTool
