#pragma once

#include <CLI/CLI.hpp>

namespace Cli {

/// Help texts of at most 80 columns. A name or value that is longer is not broken.
class HelpFormatter : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace Cli
