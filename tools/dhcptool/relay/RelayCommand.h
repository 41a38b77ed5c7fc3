#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool relay`. The command runs while `app` parses the command line. Throws CaptureError and OutputError.
void addRelayCommand(CLI::App& app);

}  // namespace DhcpTool
