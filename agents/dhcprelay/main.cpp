#include <iostream>

#include "Agent.h"
#include "Options.h"
#include "Privileges.h"

int main(int argc, char** argv) {
    using namespace DhcpRelay;
    try {
        const std::optional<Settings> settings = settingsOf(argc, argv);
        if (!settings || settings->checkOnly) return done;
        dropPrivileges();
        Agent(*settings).run();
        return done;
    } catch (const UsageError& error) {
        std::cerr << "dhcprelay: " << error.what() << "; see --help\n";
        return badUsage;
    } catch (const std::exception& error) {
        std::cerr << "dhcprelay: " << error.what() << '\n';
        return failed;
    }
}
