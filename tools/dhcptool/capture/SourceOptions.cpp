#include "capture/SourceOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "capture/FileSource.h"
#include "capture/LiveCapture.h"
#include "capture/StopSignal.h"
#include "common/NumberOptions.h"
#include "common/PortOptions.h"

namespace DhcpTool {

namespace {

std::unique_ptr<Source> openLive(const SourceOptions& options, const StopSignal& stop) {
    using Clock = LiveCapture::Clock;
    std::vector<Kitnet::IntfId> interfaces;
    for (const std::string& name : options.interfaces)
        if (std::ranges::count(interfaces, Kitnet::IntfId(name)) == 0) interfaces.emplace_back(name);
    auto end = Clock::time_point::max();
    if (options.seconds)
        end =
            Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*options.seconds));
    return std::make_unique<LiveCapture>(interfaces, stop.fd(), end, options.bufferMiB << 20);
}

}  // namespace

std::unique_ptr<Source> SourceOptions::open(const StopSignal& stop) const {
    if (live()) return openLive(*this, stop);
    if (files.empty()) throw CLI::RequiredError("--read or --live");
    return std::make_unique<FileSource>(files, Kitnet::IntfId(port), &stop);
}

void addSourceOptions(CLI::App& command, SourceOptions& options) {
    constexpr char group[] = "Input";
    constexpr U32 largestBufferMiB = 1023;  // the kernel takes fewer than 2^30 bytes
    CLI::Option* const files =
        command
            .add_option("-r,--read", options.files,
                        "Capture files, pcap or pcapng, also compressed with gzip or\nzstd; - is the standard input. "
                        "--read may be left out")
            ->type_name("FILE")
            ->group(group);
    CLI::Option* const plainFiles = command.add_option("FILE", options.files)->group("")->excludes(files);
    CLI::Option* const live =
        command.add_option("-i,--live", options.interfaces, "Live interfaces of this host, instead of files")
            ->type_name("IFACE")
            ->check(portNameFault, "")
            ->excludes(files)
            ->excludes(plainFiles)
            ->group(group);
    command.add_option("--interface", options.port, "Switch port on which the frames of files arrive")
        ->type_name("NAME")
        ->check(portNameFault, "")
        ->excludes(live)
        ->capture_default_str()
        ->group(group);
    addSeconds(command, "--duration", options.seconds, 0, 1e8, "Stop the live capture after SECONDS")
        ->needs(live)
        ->group(group);
    command.add_option("--buffer", options.bufferMiB, "Receive buffer of each live interface and protocol")
        ->type_name("MIB")
        ->check(CLI::Range(U32{1}, largestBufferMiB))
        ->needs(live)
        ->capture_default_str()
        ->group(group);
}

}  // namespace DhcpTool
