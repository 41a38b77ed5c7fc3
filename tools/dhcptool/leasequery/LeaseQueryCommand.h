#pragma once

namespace CLI {
class App;
}

namespace DhcpTool {

/// Adds `dhcptool leasequery`, which runs while `app` parses the command line and then puts its exit status in
/// `status`. It raises OutputError and std::system_error.
void addLeaseQueryCommand(CLI::App& app, int& status);

}  // namespace DhcpTool
