#pragma once

#include <stdexcept>

#include "Settings.h"

namespace DhcpRelay {

/// Exit status of the program.
enum Status { done = 0, failed = 1, badUsage = 2 };

/// An error in the command line or the configuration file. The text names the option.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the settings from the command line and from the configuration file that it names. Returns no value after
/// --help, --version or --list-reasons, whose text it has printed. Throws UsageError.
std::optional<Settings> settingsOf(int argc, const char* const* argv);

}  // namespace DhcpRelay
