#include <CLI/CLI.hpp>

#include "capture/Capture.h"
#include "common/Output.h"
#include "common/Printable.h"
#include "follow/FollowCommand.h"
#include "leasequery/LeaseQueryCommand.h"
#include "relay/RelayCommand.h"
#include "snoop/SnoopCommand.h"

namespace {

/// Exit status, unless the command sets another one.
enum Status { done = 0, failed = 1, badCapture = 2 };

}  // namespace

int main(int argc, char** argv) {
    using namespace DhcpTool;
    int status = done;
    try {
        CLI::App app("Inspects DHCP traffic, rewrites it as a relay, and queries leases.", "dhcptool");
        app.set_version_flag("--version", DHCPTOOL_VERSION);
        app.require_subcommand(1);
        addFollowCommand(app);
        addLeaseQueryCommand(app, status);
        addRelayCommand(app);
        addSnoopCommand(app);
        try {
            app.parse(argc, argv);
        } catch (const CLI::Success& help) {
            return app.exit(help);
        } catch (const CLI::ParseError& error) {
            complain(harmless(error.what()) + "; see --help");
            return failed;
        }
    } catch (const CaptureError& error) {
        complain(error.what());
        return badCapture;
    } catch (const std::exception& error) {
        complain(harmless(error.what()));
        return failed;
    }
    return status;
}
