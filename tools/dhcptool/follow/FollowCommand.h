#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool follow`. The command runs while `app` parses the command line. Throws CaptureError and OutputError.
void addFollowCommand(CLI::App& app);

}  // namespace DhcpTool
