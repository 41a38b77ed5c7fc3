#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool stats`. The command runs while `app` parses the command line. Throws CaptureError and OutputError.
void addStatsCommand(CLI::App& app);

}  // namespace DhcpTool
