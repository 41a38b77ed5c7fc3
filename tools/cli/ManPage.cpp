#include "ManPage.h"

#include <cctype>

#include "DhcpLib/Version.h"

namespace Cli {

namespace {

/// Text as roff takes it literally. Hyphens become those of the keyboard, so that options can be copied.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

/// A line of text. A leading control character of roff is no longer at its start.
std::string line(std::string_view text) {
    const bool control = text.starts_with('.') || text.starts_with('\'');
    return (control ? "\\&" : "") + escaped(text) + '\n';
}

std::string filled(std::string_view text) {
    std::string out;
    for (const std::string& each : wrapped(text, 72)) out += line(each);
    return out;
}

std::string upper(std::string_view text) {
    std::string out;
    for (const char c : text) out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

std::string section(std::string_view title) { return ".SH " + upper(title) + '\n'; }

std::string verbatim(std::string_view text) { return ".nf\n" + escaped(text) + "\n.fi\n"; }

std::string prose(std::string_view text, bool first) {
    std::string out;
    for (const Paragraph& paragraph : paragraphs(text)) {
        if (!first) out += ".PP\n";
        first = false;
        out += paragraph.verbatim ? verbatim(paragraph.text) : filled(paragraph.text);
    }
    return out;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string optionEntries(const OptionGroup& group) {
    std::string out;
    for (const OptionText& option : group.options) {
        out += ".TP\n";
        for (const std::string& name : option.names) out += (&name == &option.names.front() ? "" : ", ") + bold(name);
        if (!option.value.empty()) out += ' ' + italic(option.value);
        out += '\n' + filled(option.about);
    }
    return out;
}

std::string synopsis(const CommandText& command, const std::string& name) {
    std::string out = bold(name);
    for (const OptionGroup& group : command.groups)
        for (const OptionText& option : group.options)
            if (option.required) out += ' ' + bold(option.names.back()) + ' ' + italic(option.value);
    return out + " [" + italic("OPTION") + "]...\n";
}

std::string commands(const CommandText& program) {
    std::string out;
    for (const CommandText& command : program.commands) {
        out += section(program.name + ' ' + command.name) + prose(command.about, true);
        for (const OptionGroup& group : command.groups) out += ".SS " + group.title + '\n' + optionEntries(group);
        if (!command.footer.empty()) out += ".SS Notes\n" + prose(command.footer, true);
    }
    return out;
}

}  // namespace

std::string manPage(const CommandText& command, const Program& program) {
    std::string out = ".TH " + upper(command.name) + ' ' + std::to_string(program.section) +
                      " " DHCPLIB_RELEASE_DATE " \"" + command.name + ' ' + std::string(DhcpLib::version) + "\"\n";
    out += section("Name") + escaped(command.name) + " \\- " + line(firstSentence(command.about));
    out += section("Synopsis");
    if (command.commands.empty()) out += synopsis(command, command.name);
    for (const CommandText& inner : command.commands) {
        if (&inner != &command.commands.front()) out += ".br\n";
        out += synopsis(inner, command.name + ' ' + inner.name);
    }
    out += section("Description") + prose(command.about, true) + prose(command.footer, false);
    for (const OptionGroup& group : command.groups) out += section(group.title) + optionEntries(group);
    out += commands(command) + section("Exit status");
    for (const ExitMeaning& exit : program.exits)
        out += ".TP\n" + bold(std::to_string(exit.status)) + '\n' + filled(exit.meaning);
    if (!program.examples.empty()) out += section("Examples");
    for (const Example& example : program.examples)
        out += (&example == &program.examples.front() ? "" : ".PP\n") + filled(example.about) + ".PP\n.RS 4\n" +
               verbatim(example.command) + ".RE\n";
    return out + section("See also") + filled(program.seeAlso);
}

}  // namespace Cli
