#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool relay`, which runs while `app` parses the command line. It raises CaptureError and OutputError.
void addRelayCommand(CLI::App& app);

}  // namespace DhcpTool
