#include "Program.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "CommandText.h"
#include "Completion.h"
#include "Help.h"
#include "ManPage.h"
#include "VersionText.h"

namespace Cli {

namespace {

void generate(const CLI::App& app, const Program& program, const std::string& what) {
    const CommandText command = commandText(app);
    if (what == "man")
        std::cout << manPage(command, program);
    else if (what == "bash")
        std::cout << bashCompletion(command);
    else if (what == "zsh")
        std::cout << zshCompletion(command);
    else
        std::cout << fishCompletion(command);
}

}  // namespace

void describe(CLI::App& app, const Program& program) {
    app.formatter(std::make_shared<HelpFormatter>());
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", versionText(app.get_name()),
                         "Print version, build and enterprise number, and exit");
    app.add_option_function<std::string>("--generate",
                                         [&app, &program](const std::string& what) {
                                             generate(app, program, what);
                                             throw CLI::Success();
                                         })
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}))
        ->configurable(false)
        ->group("");
}

void answer(const CLI::App& app, const CLI::Success& asked) {
    app.exit(asked);
    // A reader that ends early is no error.
    if (!std::cout.flush() && errno != EPIPE) throw std::runtime_error("cannot write the output");
}

}  // namespace Cli
