#include "CommandText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace Cli {

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
    return parts;
}

/// Splits CLI11's description of a value, such as "NAME:{new,old}" or "SECONDS:INT in [1 - 9]", into name and choices.
void readValue(OptionText& text, const std::string& described) {
    text.value = described;
    for (const char* const range : {":INT in [", ":UINT in [", ":FLOAT in ["})
        text.value = text.value.substr(0, text.value.find(range));
    if (const std::size_t set = text.value.find(":{"); set != std::string::npos) {
        text.choices = split(text.value.substr(set + 2, text.value.find('}') - set - 2), ',');
        text.value = joined(text.choices, "|");
    } else if (text.value.find('|') != std::string::npos) {
        text.choices = split(text.value, '|');
    }
}

OptionText optionText(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames()) text.names.push_back('-' + name);
    for (const std::string& name : option.get_lnames()) text.names.push_back("--" + name);
    if (option.get_items_expected_max() != 0) readValue(text, option.get_type_name());
    if (option.get_allow_extra_args()) text.value += "...";
    text.required = option.get_required();
    text.about = joined(wrapped(option.get_description(), 1), " ");
    if (!option.get_default_str().empty()) text.about += " (default " + option.get_default_str() + ')';
    return text;
}

void addOptions(std::vector<OptionGroup>& groups, const CLI::App& app, const std::string& title = {}) {
    for (const CLI::Option* option : app.get_options()) {
        const bool repeatedHelp = !title.empty() && option == app.get_help_ptr();  // each option group has one
        if (option->get_group().empty() || option->get_positional() || repeatedHelp) continue;
        const std::string& name = title.empty() ? option->get_group() : title;
        auto group = std::find_if(groups.begin(), groups.end(), [&](const OptionGroup& g) { return g.title == name; });
        if (group == groups.end()) group = groups.insert(group, {name, {}});
        group->options.push_back(optionText(*option));
    }
}

}  // namespace

CommandText commandText(const CLI::App& app) {
    CommandText command{app.get_name(), app.get_description(), app.get_footer(), {}, {}};
    addOptions(command.groups, app);
    for (const CLI::App* inner : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (inner->get_group().empty()) continue;
        if (inner->get_name().empty())
            addOptions(command.groups, *inner, inner->get_description());
        else
            command.commands.push_back(commandText(*inner));
    }
    return command;
}

std::string firstSentence(std::string_view text) {
    std::string sentence = joined(wrapped(text, 1), " ");
    sentence = sentence.substr(0, sentence.find(". "));
    if (!sentence.empty() && sentence.back() == '.') sentence.pop_back();
    return sentence;
}

std::vector<Paragraph> paragraphs(std::string_view text) {
    std::vector<Paragraph> found;
    bool ended = true;
    for (const std::string& line : split(std::string(text), '\n')) {
        const bool verbatim = line.starts_with(' ');
        if (!line.empty()) {
            if (ended || found.back().verbatim != verbatim)
                found.push_back({line, verbatim});
            else
                found.back().text += '\n' + line;
        }
        ended = line.empty();
    }
    return found;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    std::istringstream words{std::string(text)};
    for (std::string word; words >> word;) {
        if (lines.empty() || lines.back().size() + 1 + word.size() > width)
            lines.push_back(word);
        else
            lines.back() += ' ' + word;
    }
    return lines;
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string all;
    for (const std::string& text : texts) {
        if (&text != &texts.front()) all += separator;
        all += text;
    }
    return all;
}

}  // namespace Cli
