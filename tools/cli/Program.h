#pragma once

#include <span>
#include <string_view>

namespace CLI {
class App;
class Success;
}  // namespace CLI

namespace Cli {

struct ExitMeaning {
    int status;
    std::string_view meaning;
};

struct Example {
    std::string_view about, command;
};

/// What the manual page says beside the commands and options, which it takes from the CLI::App.
struct Program {
    int section;  ///< of the manual, 1 or 8
    std::span<const ExitMeaning> exits;
    std::span<const Example> examples;
    std::string_view seeAlso;  ///< such as "dhcprelay(8), tcpdump(8)"
};

/// Adds --version, and --generate, which is not in the help and prints the manual page or a shell's completion. Lets
/// --help fit into 80 columns. Call it before subcommands are added. `program` must live as long as `app`.
///
/// Texts given to `app` are split into paragraphs at blank lines. A line that starts with a space is printed as it is.
/// All other line breaks are ignored. An option with few possible values names them as its type: "text|json".
void describe(CLI::App& app, const Program& program);

/// Prints the help or the version that the command line asks for. Throws std::runtime_error if it cannot be written.
void answer(const CLI::App& app, const CLI::Success& asked);

}  // namespace Cli
