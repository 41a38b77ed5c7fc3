#pragma once

#include <CLI/CLI.hpp>

namespace DhcpRelay {

/// Reads a configuration file for the command line parser: a JSON object, which may contain comments. Its keys are the
/// names of the long options. An option that may be repeated takes an array; a flag takes true or false.
class JsonConfig final : public CLI::Config {
public:
    std::vector<CLI::ConfigItem> from_config(std::istream& in) const override;
    std::string to_config(const CLI::App*, bool, bool, std::string) const override { return {}; }
};

}  // namespace DhcpRelay
