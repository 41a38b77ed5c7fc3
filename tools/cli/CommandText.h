#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace Cli {

/// An option as help, manual page and completion show it.
struct OptionText {
    std::vector<std::string> names;    ///< with their hyphens, short ones first
    std::string value;                 ///< name of the value; empty if the option takes none
    std::vector<std::string> choices;  ///< all values that are possible, if they are few
    bool required = false;
    std::string about;
};

struct OptionGroup {
    std::string title;
    std::vector<OptionText> options;
};

/// A program or a subcommand.
struct CommandText {
    std::string name, about, footer;
    std::vector<OptionGroup> groups;
    std::vector<CommandText> commands;
};

/// Reads a command, with its options by group and its subcommands, in the order in which they were added. Options and
/// commands whose group is empty are hidden.
CommandText commandText(const CLI::App& app);

/// The text up to the first full stop, without it.
std::string firstSentence(std::string_view text);

struct Paragraph {
    std::string text;       ///< several lines if it is verbatim
    bool verbatim = false;  ///< to be printed as it is
};

std::vector<Paragraph> paragraphs(std::string_view text);

/// Breaks a text between words into lines of at most `width` bytes. A longer word gets a line of its own.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// `texts` with `separator` between them.
std::string joined(const std::vector<std::string>& texts, std::string_view separator);

}  // namespace Cli
