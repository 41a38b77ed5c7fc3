#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool leasequery`. The command runs while `app` parses the command line and stores its exit status in
/// `status`. Throws OutputError and std::system_error.
void addLeaseQueryCommand(CLI::App& app, int& status);

}  // namespace DhcpTool
