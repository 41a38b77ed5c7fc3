#include "relay/RelayCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <memory>

#include "capture/CaptureWriter.h"
#include "capture/StopSignal.h"
#include "common/AddressOption.h"
#include "common/Output.h"
#include "common/Progress.h"
#include "relay/Relay.h"

namespace DhcpTool {

namespace {

constexpr char relayAbout[] =
    R"(Rewrites the DHCPv4 messages of a capture as a relay agent does: adds option 82 (relay agent information) to
requests, removes it from replies, and corrects lengths and checksums. Copies all other frames. Prints a line for each
message, then, on stderr, counters.)";
constexpr char relayFooter[] =
    R"(Messages that cannot be rewritten, or whose option 82 would be broken afterwards, fragments and incomplete datagrams
are copied unchanged and reported. If the capture is written to the standard output, the lines go to stderr.)";

const std::map<std::string, DhcpLib::RelayGeneration>& generations() {
    using enum DhcpLib::RelayGeneration;
    static const std::map<std::string, DhcpLib::RelayGeneration> all{{"new", preparePacketNew}, {"old", preparePacket}};
    return all;
}

struct RelayArguments {
    std::string source, target;
    RelaySettings settings;
};

void rewriteFrames(CaptureReader& source, CaptureWriter& target, Relayer& relayer, Output& report) {
    Progress progress(source.size());
    while (target.open()) {
        const auto frame = source.next();
        if (!frame) return;
        const Relayer::Result result = relayer.take(*frame);
        if (result.frame)
            target.write(frame->time, {result.frame->data(), result.frame->bytes()}, result.frame->bytes());
        else
            target.write(frame->time, frame->bytes, frame->sentBytes);
        if (!result.line.empty()) {
            progress.hide();
            report.line(result.line);
        }
        progress.at(source.position());
    }
}

void relay(const RelayArguments& arguments) {
    const StopSignal stop;
    CaptureReader source(arguments.source, &stop);
    checkTarget(source, arguments.target);
    const bool live = source.size() == 0;
    Output report(live, arguments.target == "-" ? stderr : stdout);
    CaptureWriter target(arguments.target, live, source.nanoseconds());
    Relayer relayer(arguments.settings);
    std::exception_ptr cutShort;
    try {
        rewriteFrames(source, target, relayer, report);
    } catch (const CaptureError&) {
        cutShort = std::current_exception();
    }
    target.flush();
    report.flush();
    if (target.open()) complain(relayer.counts().text());
    if (cutShort) std::rethrow_exception(cutShort);
}

/// Adds an option whose value is a text of at most 255 bytes, the limit of a sub-option.
void addText(CLI::App& command, const std::string& name, Tyk::String& value, const std::string& what) {
    command
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = text; }, what)
        ->type_name("TEXT")
        ->check([](const std::string& text) { return std::string(text.size() <= 255 ? "" : "longer than 255 bytes"); },
                "");
}

}  // namespace

void addRelayCommand(CLI::App& app) {
    const auto arguments = std::make_shared<RelayArguments>();
    RelaySettings& settings = arguments->settings;
    DhcpLib::RelayRewrite& rewrite = settings.rewrite;
    CLI::App* const command = app.add_subcommand("relay", relayAbout)->footer(relayFooter);
    command
        ->add_option("-r,--read", arguments->source,
                     "Capture file, pcap or pcapng, also compressed with gzip or zstd; - is the standard input")
        ->type_name("FILE")
        ->required();
    command->add_option("-w,--write", arguments->target, "Capture file to write; - is the standard output")
        ->type_name("FILE")
        ->required();
    command
        ->add_option_function<std::string>(
            "--generation", [&settings](const std::string& name) { settings.generation = generations().at(name); },
            "Rewriting function: preparePacket (old) or preparePacketNew (new)")
        ->type_name("NAME")
        ->check(CLI::IsMember(generations()))
        ->default_str("old");
    addText(*command, "--circuit-id", rewrite.circuitId, "Text for sub-option 1");
    addText(*command, "--remote-id", rewrite.remoteId, "Text for sub-option 2");
    addText(*command, "--vrf", rewrite.vpnId,
            "VRF name for sub-option 151; with --generation old only together with --link-selection");
    addAddress<Kitnet::IpAddr>(*command, "--link-selection", rewrite.linkselectionId, "Address for sub-option 5");
    addAddress<Kitnet::IpAddr>(*command, "--server-id-override", rewrite.serverId,
                               "Address for sub-option 11; with --generation old only together with --link-selection");
    command->add_flag("--no-vss-control", rewrite.vssControlDisable, "Leave out sub-option 152");
    addText(*command, "--vendor-interface", rewrite.vendorSpecificSubOptIntfName, "Interface name for sub-option 9");
    addAddress<Kitnet::IpGenAddr>(*command, "--vendor-vtep", rewrite.vendorSpecificSubOptSrcVtepIp,
                                  "Tunnel address for sub-option 9, IPv4 or IPv6");
    addAddress<Kitnet::IpAddr>(*command, "--restore-server-id", settings.serverId,
                               "Address to write over the server identifier of replies");
    command->callback([arguments] { relay(*arguments); });
}

}  // namespace DhcpTool
