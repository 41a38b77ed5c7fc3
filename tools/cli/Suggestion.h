#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace Cli {

/// The candidate that is most like `word`: at most two letters were added, left out, replaced, or exchanged with the
/// next one.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& candidates);

/// After a command line with unknown words: " (did you mean ...?)" for the first that is like an option of the command,
/// or an empty text.
std::string optionHint(const CLI::App& app);

}  // namespace Cli
