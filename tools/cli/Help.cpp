#include "Help.h"

#include "CommandText.h"

namespace Cli {

namespace {

constexpr std::size_t lineWidth = 80, textColumn = 26;

void appendParagraphs(std::string& out, std::string_view text) {
    for (const Paragraph& paragraph : paragraphs(text)) {
        if (!out.empty()) out += '\n';
        out += paragraph.verbatim ? paragraph.text : joined(wrapped(paragraph.text, lineWidth), "\n");
        out += '\n';
    }
}

/// Appends a term and what it means, the meaning in a column of its own.
void appendEntry(std::string& out, std::string term, const std::string& meaning) {
    term.insert(0, 2, ' ');
    if (term.size() + 2 > textColumn) {
        out += term + '\n';
        term.clear();
    }
    for (const std::string& line : wrapped(meaning, lineWidth - textColumn)) {
        term.resize(textColumn, ' ');
        out += term + line + '\n';
        term.clear();
    }
}

std::string usage(const CommandText& command, const std::string& name) {
    std::string text = "Usage: " + name;
    for (const OptionGroup& group : command.groups)
        for (const OptionText& option : group.options)
            if (option.required) text += ' ' + option.names.back() + ' ' + option.value;
    text += " [OPTION]...";
    if (!command.commands.empty()) text += " COMMAND";
    return text + '\n';
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode) const {
    const CommandText command = commandText(*app);
    std::string out = usage(command, name);
    appendParagraphs(out, command.about);
    if (!command.commands.empty()) out += "\nCommands:\n";
    for (const CommandText& inner : command.commands) appendEntry(out, inner.name, firstSentence(inner.about));
    for (const OptionGroup& group : command.groups) {
        out += '\n' + group.title + ":\n";
        for (const OptionText& option : group.options)
            appendEntry(out, joined(option.names, ", ") + (option.value.empty() ? "" : ' ' + option.value),
                        option.about);
    }
    appendParagraphs(out, command.footer);
    return out;
}

}  // namespace Cli
