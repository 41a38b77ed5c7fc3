#include "snoop/SnoopCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "capture/ReadFrames.h"
#include "capture/SourceOptions.h"
#include "capture/StopSignal.h"
#include "common/NumberOptions.h"
#include "common/PortOptions.h"
#include "filter/FilterOptions.h"
#include "snoop/Snoop.h"
#include "view/ViewOptions.h"

namespace DhcpTool {

namespace {

constexpr char snoopAbout[] =
    "Prints the DHCP, BOOTP and DHCPv6 messages of capture files or of live "
    "interfaces as a DHCP snooping agent sees them, then, on stderr, counters.";
constexpr char snoopFooter[] =
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
class Sink final : public FrameSink {
public:
    Sink(const SnoopArguments& arguments, const SnoopSettings& settings, const Source& source)
        : source_(source),
          messages_(arguments.messages),
          output_(false, arguments.target == "-" ? stderr : stdout),
          snooper_(settings, output_, opened(arguments.target)) {}

    void take(const Arrival& frame) override { snooper_.take(frame); }
    void flush() override {
        snooper_.flush();
        output_.flush();
        if (target_) target_->flush();
    }
    void finish() override {
        flush();
        if (!output_.open()) return;
        complain(snooper_.countsText());
        source_.forEachCount(complain);
    }
    bool wantsMore() const override {
        return snooper_.printed() < messages_ && output_.open() && (!target_ || target_->open());
    }

private:
    CaptureWriter* opened(const std::string& path) {
        if (path.empty()) return nullptr;
        return &target_.emplace(path, false);
    }

    const Source& source_;
    const U64 messages_;
    Output output_;
    std::optional<CaptureWriter> target_;
    Snooper snooper_;
};

void snoop(const SnoopArguments& arguments) {
    const StopSignal stop;
    SnoopSettings settings = arguments.settings;
    settings.ports = arguments.ports.of(arguments.source.ports());
    const auto source = arguments.source.open(stop);
    checkTarget(*source, arguments.target);
    Sink sink(arguments, settings, *source);
    readFrames(*source, sink);
}

void addOutput(CLI::App& command, SnoopArguments& arguments) {
    constexpr char group[] = "Output";
    command
        .add_flag("--rejected", arguments.settings.onlyRefused,
                  "Print only the DHCP frames that the parser refuses, and why")
        ->group(group);
    addCount(command, arguments.messages, "Stop after N messages")->group(group);
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
    CLI::App* const command = app.add_subcommand("snoop", snoopAbout)->footer(snoopFooter);
    addSourceOptions(*command, arguments->source);
    addFilterOptions(*command, arguments->settings.filter);
    addOutput(*command, *arguments);
    addPortOptions(*command, arguments->ports);
    addParser(*command, arguments->settings);
    command->callback([arguments] { snoop(*arguments); });
}

}  // namespace DhcpTool
