#include "view/ViewOptions.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>

namespace DhcpTool {

namespace {

constexpr char viewGroup[] = "Output";

/// Whether colours are wanted without an option: on a terminal, unless NO_COLOR is set (https://no-color.org).
bool colouredByDefault() {
    const char* const noColor = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (noColor == nullptr || *noColor == '\0') && isatty(STDOUT_FILENO) != 0 &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

CLI::Option* addKind(CLI::App& command, const std::string& name, ViewSettings& settings, ViewKind kind,
                     const std::string& what) {
    return command
        .add_flag_callback(
            name, [&settings, kind] { settings.kind = kind; }, what)
        ->group(viewGroup);
}

}  // namespace

void addTimeOption(CLI::App& command, TimeForm& form) {
    static const std::map<std::string, TimeForm> forms{
        {"absolute", TimeForm::absolute}, {"relative", TimeForm::relative}, {"delta", TimeForm::delta}};
    command
        .add_option_function<std::string>(
            "--time", [&form](const std::string& name) { form = forms.at(name); },
            "Times as UTC, or in seconds since the first message (relative) or the one before (delta)")
        ->check(CLI::IsMember(forms).description(""))
        ->type_name("absolute|relative|delta")
        ->default_str("absolute")
        ->group(viewGroup);
}

void addColorOption(CLI::App& command, bool& coloured) {
    coloured = colouredByDefault();
    command
        .add_option_function<std::string>(
            "--color",
            [&coloured](const std::string& when) {
                if (when != "auto") coloured = when == "always";
            },
            "Colours; auto: on a terminal, unless NO_COLOR is set")
        ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
        ->type_name("auto|always|never")
        ->default_str("auto")
        ->group(viewGroup);
}

void addViewOptions(CLI::App& command, ViewSettings& settings) {
    CLI::Option* const quick =
        addKind(command, "-q,--quick", settings, ViewKind::quick, "One short line per message, at most 100 columns");
    CLI::Option* const verbose = addKind(command, "-v,--verbose", settings, ViewKind::verbose,
                                         "All options of a message, one per line, with their positions");
    CLI::Option* const json =
        addKind(command, "--json", settings, ViewKind::json, "One JSON object per message, each on its own line");
    quick->excludes(verbose)->excludes(json);
    verbose->excludes(json);
    command
        .add_flag("--bridging-config", settings.bridgingConfig, "JSON: add the settings of the ports to each message")
        ->needs(json)
        ->group(viewGroup);
    addTimeOption(command, settings.time);
    addColorOption(command, settings.coloured);
}

}  // namespace DhcpTool
