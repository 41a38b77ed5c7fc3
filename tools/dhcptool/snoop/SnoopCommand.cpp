#include "snoop/SnoopCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <limits>
#include <memory>

#include "capture/SourceOptions.h"
#include "capture/StopSignal.h"
#include "common/PortOptions.h"
#include "common/Progress.h"
#include "filter/FilterOptions.h"
#include "snoop/Snoop.h"
#include "view/ViewOptions.h"

namespace DhcpTool {

namespace {

constexpr char about[] =
    "Prints the DHCP, BOOTP and DHCPv6 messages of capture files or of live "
    "interfaces as a DHCP snooping agent sees them, then, on stderr, counters.";
constexpr char footer[] =
    R"(A line starts with the frame's number, its time, for a live frame interface and direction, and the VLAN. Message
type, transaction, client and addresses follow, then the options that matter, each by its name. Text from a packet is
in quotes; bytes that could steer a terminal are printed as \xNN. Identifiers that are not text are printed as 0x and
hexadecimal.

A frame to a DHCP port that the parser refuses is printed as far as it goes, and so is a malformed message. A mark at
the end says what is wrong, and where: [refused: ...] or [malformed: ...]. All other frames are only counted.

JSON: one object a message. Byte strings are lower-case hexadecimal, addresses are strings, times numbers of seconds.
The file share/DhcpLib/dhcptool.schema.json describes all members.

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
    Output output;
    std::optional<CaptureWriter> target;
    Snooper snooper;

    Sink(const SnoopArguments& arguments, const SnoopSettings& settings)
        : output(false, arguments.target == "-" ? stderr : stdout),
          snooper(settings, output, opened(arguments.target)) {}

    bool open() const { return output.open() && (!target || target->open()); }
    void flush() {
        snooper.flush();
        output.flush();
        if (target) target->flush();
    }

private:
    CaptureWriter* opened(const std::string& path) {
        if (path.empty()) return nullptr;
        return &target.emplace(path, false);
    }
};

void takeFrames(Source& source, Sink& sink, U64 messages) {
    constexpr U64 framesPerStep = 1024;
    Progress progress(source.size());
    while (sink.snooper.printed() < messages && sink.open()) {
        if (source.mayWait()) sink.flush();
        const auto frame = source.next();
        if (!frame) return;
        sink.snooper.take(*frame);
        if (frame->number % framesPerStep == 0) progress.at(source.position());
    }
}

void snoop(const SnoopArguments& arguments) {
    const StopSignal stop;
    SnoopSettings settings = arguments.settings;
    settings.ports = arguments.ports.of(arguments.source.ports());
    const auto source = arguments.source.open(stop);
    Sink sink(arguments, settings);
    std::exception_ptr cutShort;
    try {
        takeFrames(*source, sink, arguments.messages);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    sink.flush();
    if (sink.output.open()) {
        complain(sink.snooper.countsText());
        source->forEachCount(complain);
    }
    if (cutShort) std::rethrow_exception(cutShort);
}

void addOutput(CLI::App& command, SnoopArguments& arguments) {
    constexpr char group[] = "Output";
    command
        .add_flag("--rejected", arguments.settings.onlyRefused,
                  "Print only the DHCP frames that the parser refuses, and why")
        ->group(group);
    command.add_option("--count", arguments.messages, "Stop after N messages")
        ->type_name("N")
        ->check(CLI::Range(U64{1}, std::numeric_limits<U64>::max()))
        ->group(group);
    addViewOptions(command, arguments.settings.view);
    command
        .add_option("--write", arguments.target,
                    "Write the frames of the printed messages to a pcap file; - is the standard output")
        ->type_name("FILE")
        ->group(group);
}

void addParser(CLI::App& command, SnoopSettings& settings) {
    constexpr char group[] = "Parser";
    command
        .add_option("--trace", settings.traceLevel, "Print the library's trace lines up to LEVEL (1 to 4) on stderr")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 9))
        ->group(group);
    command
        .add_flag("--keep-state", settings.keepState,
                  "Reuse one parser: attributes that a frame does not set keep their values")
        ->group(group);
}

}  // namespace

void addSnoopCommand(CLI::App& app) {
    const auto arguments = std::make_shared<SnoopArguments>();
    CLI::App* const command = app.add_subcommand("snoop", about)->footer(footer);
    addSourceOptions(*command, arguments->source);
    addFilterOptions(*command, arguments->settings.filter);
    addOutput(*command, *arguments);
    addPortOptions(*command, arguments->ports);
    addParser(*command, arguments->settings);
    command->callback([arguments] { snoop(*arguments); });
}

}  // namespace DhcpTool
