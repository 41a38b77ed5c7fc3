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
    "Parses each frame of a capture as a DHCP snooping agent does and prints a line for each DHCP or BOOTP message.\n"
    "Counts, and why frames were rejected, follow on stderr.";
constexpr char footer[] =
    "With --json each message is an object: \"frame\", then every attribute of the parser under its own name. Byte\n"
    "strings from the wire are lower-case hex; dhcpMsgType and paramReqList, which the parser makes, are text.\n"
    "Addresses are text, times numbers of seconds.\n"
    "Exit status: 0 done, 1 wrong usage or no place for the output, 2 the capture cannot be read to its end.";

const std::map<std::string, Bridging::SwitchportMode>& modes() {
    using enum Bridging::SwitchportMode;
    static const std::map<std::string, Bridging::SwitchportMode> all{
        {"access", access}, {"dot1q-tunnel", dot1qTunnel}, {"trunk", trunk}};
    return all;
}

struct SnoopArguments {
    std::string file;
    SnoopSettings settings;
};

void printMessages(CaptureReader& capture, Snooper& snooper, Output& output) {
    Progress progress(capture.size());
    while (output.open()) {
        const auto frame = capture.next();
        if (!frame) return;
        if (const auto line = snooper.take(*frame)) {
            progress.hide();
            output.line(*line);
        }
        progress.at(capture.position());
    }
}

void snoop(const SnoopArguments& arguments) {
    CaptureReader capture(arguments.file);
    Snooper snooper(arguments.settings);
    Output output(capture.size() == 0);
    std::exception_ptr cutShort;
    try {
        printMessages(capture, snooper, output);
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
    command->add_option("--interface", settings.interface, "Switch port on which the frames arrive")
        ->type_name("NAME")
        ->check(
            [](const std::string& name) {
                return Kitnet::IntfId::isValidName(name) ? std::string() : "no interface name: " + name;
            },
            "")
        ->capture_default_str();
    command->add_option("--native-vlan", settings.nativeVlan, "VLAN of frames without a tag")
        ->type_name("VLAN")
        ->check(CLI::Range(1, 4094))
        ->capture_default_str();
    command
        ->add_option_function<std::string>(
            "--switchport-mode", [&settings](const std::string& name) { settings.switchportMode = modes().at(name); },
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
