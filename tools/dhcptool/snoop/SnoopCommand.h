#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool snoop`. The command runs while `app` parses the command line. Throws CaptureError and OutputError.
void addSnoopCommand(CLI::App& app);

}  // namespace DhcpTool
