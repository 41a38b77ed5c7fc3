#include "Suggestion.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace Cli {

namespace {

/// Number of letters to add, leave out, replace or exchange with the next one (optimal string alignment).
std::size_t distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> beforeLast(to.size() + 1), last(to.size() + 1), row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row.back();
}

}  // namespace

std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& candidates) {
    constexpr std::size_t longest = 40;  // no command or option is longer
    std::optional<std::string> best;
    std::size_t limit = std::min<std::size_t>(3, word.size());
    if (word.size() > longest) return best;
    for (const std::string& candidate : candidates)
        if (const std::size_t away = distance(word, candidate); away < limit) {
            limit = away;
            best = candidate;
        }
    return best;
}

std::string optionHint(const CLI::App& app) {
    const auto selected = app.get_subcommands();
    const CLI::App& command = selected.empty() ? app : *selected.front();
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& word : app.remaining(true)) {
        if (!word.starts_with("--")) continue;
        if (const auto meant = closest(word.substr(0, word.find('=')), names)) return " (did you mean " + *meant + "?)";
    }
    return {};
}

}  // namespace Cli
