#include "snoop/SnoopCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <limits>
#include <memory>

#include "capture/CaptureWriter.h"
#include "capture/LiveCapture.h"
#include "capture/StopSignal.h"
#include "common/Output.h"
#include "common/Progress.h"
#include "snoop/PortOptions.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Parses each frame of a capture file or of live interfaces as a DHCP snooping agent does. Prints a line for each\n"
    "DHCP, BOOTP or DHCPv6 message, then, on stderr, counters and the reasons for rejected frames.";
constexpr char footer[] =
    R"(JSON: one object per message, with "frame" (its number), for a live frame "interface" and "outgoing", and every
attribute of the parser. Byte strings are lower-case hex, addresses and the parser's own texts (dhcpMsgType,
paramReqList) are strings, times are numbers of seconds. For DHCPv6 these fields follow:
"messageType", "xid"; "clientId", "serverId" with "data", "type" (LLT, EN, LL or UUID) and the fields of that type
("time" counts from 2000); "ia", a list with "type", "iaid", "t1", "t2", "addresses", "prefixes"; "interfaceId",
"remoteId" with "data" and, if it is well-formed, its fields; "relay", the relay messages around the message,
outermost first, with "messageType", "hopCount", "linkAddr", "peerAddr", "interfaceId", "remoteId".
Fields that are absent or too short are null, or an empty list.
Live capture: the time is that of reading. Frames that this host sends are marked "out". If only some of the
interfaces exist, or one disappears, the program waits for it. The first SIGINT or SIGTERM stops the capture.
Exit status: 0 success; 1 wrong usage, or the output cannot be written; 2 the capture cannot be read to its end,
none of the interfaces exists, or one cannot be opened (CAP_NET_RAW is required).)";

struct SnoopArguments {
    std::string file;
    std::vector<std::string> interfaces;
    std::string port = "Ethernet1";  ///< the port on which the frames of a file arrive
    PortOptions ports;
    SnoopSettings settings;
    std::string target;
    U64 messages = std::numeric_limits<U64>::max();
    std::optional<double> seconds;
};

void printMessages(CaptureReader& capture, const Kitnet::IntfId& intf, Snooper& snooper, Output& output) {
    Progress progress(capture.size());
    while (output.open()) {
        const auto frame = capture.next();
        if (!frame) return;
        const Arrival arrival{frame->number,    frame->time, Kitnet::globalPktManager().newPkt(frame->bytes),
                              frame->sentBytes, intf,        frame->ifIndex};
        if (const auto line = snooper.take(arrival)) {
            progress.hide();
            output.line(*line);
        }
        progress.at(capture.position());
    }
}

void snoopFile(const SnoopArguments& arguments, const SnoopSettings& settings) {
    CaptureReader capture(arguments.file);
    Snooper snooper(settings);
    Output output(capture.size() == 0);
    std::exception_ptr cutShort;
    try {
        printMessages(capture, Kitnet::IntfId(arguments.port), snooper, output);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    output.flush();
    if (output.open()) complain(snooper.counts().text());
    if (cutShort) std::rethrow_exception(cutShort);
}

LiveCapture::Clock::time_point endOf(const SnoopArguments& arguments) {
    using Clock = LiveCapture::Clock;
    if (!arguments.seconds) return Clock::time_point::max();
    return Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*arguments.seconds));
}

void printLiveMessages(LiveCapture& capture, Snooper& snooper, CaptureWriter* target, Output& output, U64 messages) {
    while (messages != 0 && output.open() && (target == nullptr || target->open())) {
        const auto frame = capture.next();
        if (!frame) return;
        if (target != nullptr) target->write(frame->time, *frame->pkt);
        if (const auto line = snooper.take(*frame)) {
            output.line(*line);
            --messages;
        }
    }
}

void snoopLive(const SnoopArguments& arguments, const SnoopSettings& settings) {
    const StopSignal stop;
    std::vector<Kitnet::IntfId> interfaces;
    for (const std::string& name : arguments.interfaces)
        if (std::ranges::count(interfaces, Kitnet::IntfId(name)) == 0) interfaces.emplace_back(name);
    Snooper snooper(settings);
    Output output(true, arguments.target == "-" ? stderr : stdout);
    LiveCapture capture(interfaces, stop.fd(), endOf(arguments));
    std::optional<CaptureWriter> target;
    if (!arguments.target.empty()) target.emplace(arguments.target, true);
    printLiveMessages(capture, snooper, target ? &*target : nullptr, output, arguments.messages);
    if (!output.open()) return;
    complain(snooper.counts().text());
    capture.forEachCount(complain);
}

void snoop(const SnoopArguments& arguments) {
    SnoopSettings settings = arguments.settings;
    if (arguments.interfaces.empty()) {
        settings.ports = arguments.ports.of({arguments.port});
        snoopFile(arguments, settings);
    } else {
        settings.ports = arguments.ports.of(arguments.interfaces);
        snoopLive(arguments, settings);
    }
}

void addSources(CLI::App& command, SnoopArguments& arguments) {
    CLI::Option* const file =
        command.add_option("-r,--read", arguments.file, "Capture file, pcap or pcapng; - is the standard input")
            ->type_name("FILE");
    CLI::Option* const live =
        command.add_option("-i,--live", arguments.interfaces, "Live interfaces of this host, instead of a file")
            ->type_name("IFACE")
            ->check(portNameFault, "")
            ->excludes(file);
    command.add_option("--interface", arguments.port, "Switch port on which the frames of a file arrive")
        ->type_name("NAME")
        ->check(portNameFault, "")
        ->excludes(live)
        ->capture_default_str();
    command.add_option("--write", arguments.target, "Write the live frames to a pcap file; - is the standard output")
        ->type_name("FILE")
        ->needs(live);
    command.add_option("--count", arguments.messages, "Stop after N messages")
        ->type_name("N")
        ->check(CLI::Range(U64{1}, std::numeric_limits<U64>::max()))
        ->needs(live);
    command.add_option("--duration", arguments.seconds, "Stop after SECONDS")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 1e8))
        ->needs(live);
}

/// Adds an option that can be repeated for several ports.
void addPortOption(CLI::App& command, const std::string& name, std::vector<std::string>& texts, const char* valueName,
                   std::string (*fault)(const std::string&), const std::string& what, const char* defaultText) {
    command.add_option(name, texts, what)
        ->type_name(std::string("[IFACE=]") + valueName)
        ->allow_extra_args(false)
        ->check(fault, "")
        ->default_str(defaultText);
}

}  // namespace

void addSnoopCommand(CLI::App& app) {
    const auto arguments = std::make_shared<SnoopArguments>();
    SnoopSettings& settings = arguments->settings;
    CLI::App* const command = app.add_subcommand("snoop", about)->footer(footer);
    addSources(*command, *arguments);
    addPortOption(*command, "--native-vlan", arguments->ports.nativeVlans, "VLAN", nativeVlanFault,
                  "VLAN of frames without a tag, for all interfaces or one", "1");
    addPortOption(*command, "--switchport-mode", arguments->ports.switchportModes, "MODE", switchportModeFault,
                  "Treatment of VLAN tags: access, trunk or dot1q-tunnel", "access");
    command->add_flag("--json", settings.json, "Print one JSON object per line");
    command
        ->add_option("--trace", settings.traceLevel, "Print the library's trace lines up to LEVEL (1 to 4) on stderr")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 9));
    command->add_flag("--keep-state", settings.keepState,
                      "Reuse one parser: attributes that a frame does not set keep their values");
    command->callback([arguments] {
        if (arguments->file.empty() && arguments->interfaces.empty()) throw CLI::RequiredError("--read or --live");
        snoop(*arguments);
    });
}

}  // namespace DhcpTool
