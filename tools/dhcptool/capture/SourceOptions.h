#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capture/Source.h"

namespace CLI {
class App;
}

namespace DhcpTool {

class StopSignal;

/// The user's choice of where frames come from: files or interfaces.
struct SourceOptions {
    std::vector<std::string> files, interfaces;
    std::string port = "Ethernet1";  ///< on which the frames of files arrive
    std::optional<double> seconds;   ///< length of a live capture
    U32 bufferMiB = 32;              ///< receive buffer of a live capture

    bool live() const { return !interfaces.empty(); }
    /// The names of all ports on which frames arrive.
    std::vector<std::string> ports() const { return live() ? interfaces : std::vector{port}; }
    /// Throws CLI::RequiredError if the user has named no source, and CaptureError if one cannot be opened.
    std::unique_ptr<Source> open(const StopSignal& stop) const;
};

/// Adds the options --read, --live, --interface, --duration and --buffer.
void addSourceOptions(CLI::App& command, SourceOptions& options);

}  // namespace DhcpTool
