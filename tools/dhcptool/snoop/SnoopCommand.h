#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool snoop`, which runs while `app` parses the command line. It raises CaptureError and OutputError.
void addSnoopCommand(CLI::App& app);

}  // namespace DhcpTool
