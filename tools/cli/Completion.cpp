#include "Completion.h"

#include <algorithm>

namespace Cli {

namespace {

enum class ValueKind { none, choice, file, interface, other };

ValueKind kindOf(const OptionText& option) {
    if (option.value.empty()) return ValueKind::none;
    if (!option.choices.empty()) return ValueKind::choice;
    if (option.value.starts_with("FILE")) return ValueKind::file;
    if (option.value.starts_with("IFACE") || option.value.starts_with("LINK")) return ValueKind::interface;
    return ValueKind::other;
}

std::vector<OptionText> optionsOf(const CommandText& command) {
    std::vector<OptionText> all;
    for (const OptionGroup& group : command.groups) all.insert(all.end(), group.options.begin(), group.options.end());
    return all;
}

std::vector<std::string> commandNames(const CommandText& program) {
    std::vector<std::string> names;
    for (const CommandText& command : program.commands) names.push_back(command.name);
    return names;
}

std::string replaced(std::string text, char what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, 1, with);
    return text;
}

/// A text in single quotes, for a POSIX shell and zsh.
std::string quoted(const std::string& text) { return '\'' + replaced(text, '\'', "'\\''") + '\''; }

constexpr std::string_view interfaces = "$(ls /sys/class/net 2>/dev/null)";

/// A branch of bash's `case` over the word before the one to complete.
std::string bashValues(const OptionText& option) {
    const std::string pattern = "    " + joined(option.names, "|") + ") ";
    switch (kindOf(option)) {
        case ValueKind::none:
            return {};
        case ValueKind::choice:
            return pattern + "COMPREPLY=($(compgen -W " + quoted(joined(option.choices, " ")) +
                   " -- \"$word\")); return ;;\n";
        case ValueKind::file:
            return pattern + "compopt -o default 2>/dev/null; return ;;\n";
        case ValueKind::interface:
            return pattern + "COMPREPLY=($(compgen -W \"" + std::string(interfaces) + "\" -- \"$word\")); return ;;\n";
        case ValueKind::other:
            return pattern + "return ;;\n";
    }
    return {};
}

/// A function that completes the options of a command.
std::string bashFunction(const std::string& name, const CommandText& command) {
    std::string out = '_' + name + "() {\n    case $before in\n";
    std::vector<std::string> words;
    for (const OptionText& option : optionsOf(command)) {
        out += bashValues(option);
        words.insert(words.end(), option.names.begin(), option.names.end());
    }
    // Other words may be further files of an option.
    out += "    esac\n    [[ $word == -* ]] || compopt -o default 2>/dev/null\n";
    return out + "    COMPREPLY=($(compgen -W " + quoted(joined(words, " ")) + " -- \"$word\"))\n}\n";
}

std::string zshOption(const OptionText& option) {
    std::string about = firstSentence(option.about);
    for (const char special : {'\\', '[', ']', ':'}) about = replaced(about, special, std::string("\\") + special);
    std::string action;
    switch (kindOf(option)) {
        case ValueKind::none:
            break;
        case ValueKind::choice:
            action = ":value:(" + joined(option.choices, " ") + ')';
            break;
        case ValueKind::file:
            action = ":file:_files";
            break;
        case ValueKind::interface:
            action = ":interface:_net_interfaces";
            break;
        case ValueKind::other:
            action = ":value: ";
            break;
    }
    std::string out;
    for (const std::string& name : option.names) {
        const bool takesEqualsSign = name.starts_with("--") && !action.empty();
        out += " \\\n        " + quoted('*' + name + (takesEqualsSign ? "=" : "") + '[' + about + ']' + action);
    }
    return out;
}

std::string zshFunction(const std::string& name, const CommandText& command) {
    std::string out = '_' + name + "() {\n    _arguments -s";
    for (const OptionText& option : optionsOf(command)) out += zshOption(option);
    return out + " \\\n        '*:file:_files'\n}\n";
}

/// fish's `complete` for the options of a command. `condition` holds where they are offered.
std::string fishOptions(const std::string& program, const std::string& condition, const CommandText& command) {
    std::string out;
    for (const OptionText& option : optionsOf(command)) {
        out += "complete -c " + program + condition;
        for (const std::string& name : option.names)
            out += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        std::string about = replaced(firstSentence(option.about), '\\', "\\\\");
        out += " -d '" + replaced(about, '\'', "\\'") + '\'';
        switch (kindOf(option)) {
            case ValueKind::none:
                break;
            case ValueKind::choice:
                out += " -x -a '" + joined(option.choices, " ") + '\'';
                break;
            case ValueKind::file:
                out += " -r -F";
                break;
            case ValueKind::interface:
                out += " -x -a '(ls /sys/class/net 2>/dev/null)'";
                break;
            case ValueKind::other:
                out += " -x";
                break;
        }
        out += '\n';
    }
    return out;
}

}  // namespace

std::string bashCompletion(const CommandText& program) {
    const std::string& name = program.name;
    std::string out = "# bash completion for " + name + "\n\n" + bashFunction(name + "_options", program);
    for (const CommandText& command : program.commands) out += bashFunction(name + '_' + command.name, command);
    // readline breaks words at '=', so that "--name=value" are three of them.
    out += '_' + name + R"(() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = && $COMP_CWORD -ge 2 ]]; then
        before=${COMP_WORDS[COMP_CWORD-2]}
    fi
    COMPREPLY=()
)";
    if (!program.commands.empty()) {
        out += "    if [[ $COMP_CWORD -gt 1 ]]; then\n        case ${COMP_WORDS[1]} in\n";
        for (const CommandText& command : program.commands)
            out += "        " + command.name + ") _" + name + '_' + command.name + "; return ;;\n";
        out += "        esac\n    elif [[ $word != -* ]]; then\n        compopt -o default 2>/dev/null\n";
        out += "        COMPREPLY=($(compgen -W " + quoted(joined(commandNames(program), " ")) + " -- \"$word\"))\n";
        out += "        return\n    fi\n";
    }
    return out + "    _" + name + "_options\n}\ncomplete -F _" + name + ' ' + name + '\n';
}

std::string zshCompletion(const CommandText& program) {
    const std::string& name = program.name;
    std::string out = "#compdef " + name + "\n\n" + zshFunction(name + "_options", program);
    for (const CommandText& command : program.commands) out += zshFunction(name + '_' + command.name, command);
    out += '_' + name + "() {\n";
    if (!program.commands.empty()) {
        out += "    if (( CURRENT > 2 )); then\n        case $words[2] in\n";
        for (const CommandText& command : program.commands)
            out += "        " + command.name + ") shift words; (( CURRENT-- )); _" + name + '_' + command.name +
                   "; return ;;\n";
        out += "        esac\n    elif [[ $words[CURRENT] != -* ]]; then\n        local -a commands=(\n";
        for (const CommandText& command : program.commands)
            out += "            " + quoted(command.name + ':' + firstSentence(command.about)) + '\n';
        out += "        )\n        _describe command commands\n        _files\n        return\n    fi\n";
    }
    return out + "    _" + name + "_options\n}\n_" + name + " \"$@\"\n";
}

std::string fishCompletion(const CommandText& program) {
    const std::string& name = program.name;
    if (program.commands.empty()) return "complete -c " + name + " -f\n" + fishOptions(name, "", program);
    std::string out = fishOptions(name, " -n __fish_use_subcommand", program);
    for (const CommandText& command : program.commands) {
        const std::string about = replaced(firstSentence(command.about), '\'', "\\'");
        out += "complete -c " + name + " -n __fish_use_subcommand -a " + command.name + " -d '" + about + "'\n";
        const std::string inside = " -n '__fish_seen_subcommand_from " + command.name + '\'';
        out += "complete -c " + name + inside + " -f\n" + fishOptions(name, inside, command);
    }
    return out;
}

}  // namespace Cli
