#pragma once

#include <stdexcept>

#include "Settings.h"

namespace DhcpRelay {

/// What the command line or the configuration file asks for is wrong; the text names it.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The settings of the command line and of the configuration file that it names. Nothing where the program has only to
/// print something (--help, --version, --list-reasons), which is done then. Throws UsageError.
std::optional<Settings> settingsOf(int argc, const char* const* argv);

}  // namespace DhcpRelay
