#include "snoop/SnoopCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <limits>
#include <memory>

#include "capture/CaptureWriter.h"
#include "capture/SourceOptions.h"
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

Several files are read in the order of time. Frames of other link types than Ethernet (Linux cooked captures, raw IP)
get an Ethernet header of 14 bytes, from which positions are counted.

Live capture: the time is the kernel's. Frames that this host sends are marked "out". If only some of the
interfaces exist, or one disappears, the program waits for it. The first SIGINT or SIGTERM stops the capture.
CAP_NET_RAW is required.)";

struct SnoopArguments {
    SourceOptions source;
    PortOptions ports;
    SnoopSettings settings;
    std::string target;
    U64 messages = std::numeric_limits<U64>::max();
};

/// Where the messages and their frames go.
struct Sink {
    Snooper snooper;
    Output output;
    std::optional<CaptureWriter> target;
    U64 messagesLeft;

    bool wantsMore() const { return messagesLeft != 0 && output.open() && (!target || target->open()); }
    void flush() {
        output.flush();
        if (target) target->flush();
    }
};

void printMessages(Source& source, Sink& sink) {
    constexpr U64 framesPerStep = 1024;
    Progress progress(source.size());
    while (sink.wantsMore()) {
        if (source.mayWait()) sink.flush();
        const auto frame = source.next();
        if (!frame) return;
        if (sink.target) sink.target->write(frame->time, *frame->pkt);
        if (const auto line = sink.snooper.take(*frame)) {
            progress.hide();
            sink.output.line(*line);
            --sink.messagesLeft;
        }
        if (frame->number % framesPerStep == 0) progress.at(source.position());
    }
}

void snoop(const SnoopArguments& arguments) {
    const StopSignal stop;
    SnoopSettings settings = arguments.settings;
    settings.ports = arguments.ports.of(arguments.source.ports());
    const auto source = arguments.source.open(stop);
    Sink sink{Snooper(settings), Output(false, arguments.target == "-" ? stderr : stdout), std::nullopt,
              arguments.messages};
    if (!arguments.target.empty()) sink.target.emplace(arguments.target, false);
    std::exception_ptr cutShort;
    try {
        printMessages(*source, sink);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    sink.flush();
    if (sink.output.open()) {
        complain(sink.snooper.counts().text());
        source->forEachCount(complain);
    }
    if (cutShort) std::rethrow_exception(cutShort);
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
    addSourceOptions(*command, arguments->source);
    command->add_option("--write", arguments->target, "Write the live frames to a pcap file; - is the standard output")
        ->type_name("FILE")
        ->needs("--live");
    command->add_option("--count", arguments->messages, "Stop after N messages")
        ->type_name("N")
        ->check(CLI::Range(U64{1}, std::numeric_limits<U64>::max()))
        ->needs("--live");
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
    command->callback([arguments] { snoop(*arguments); });
}

}  // namespace DhcpTool
