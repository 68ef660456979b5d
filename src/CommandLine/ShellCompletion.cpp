// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ShellCompletion.h"

#include "CommandLine/CommandTable.h"

namespace vantrell {

namespace {

/// What `vantrell-capture list` is asked for, to complete such a word; none: nothing of ours.
std::string listFor(WordKind kind) {
    switch (kind) {
    case WordKind::display:
        return "displays";
    case WordKind::window:
        return "windows";
    case WordKind::microphone:
        return "microphones";
    case WordKind::camera:
        return "cameras";
    case WordKind::project:
        return "projects";
    default:
        return {};
    }
}

template <typename Words>
std::string spaced(const Words &words) {
    std::string text;
    for (const auto &word : words)
        text += (text.empty() ? "" : " ") + std::string(word);
    return text;
}

std::string optionNames(const std::vector<OptionDescription> &options) {
    std::vector<std::string_view> names;
    for (const OptionDescription &option : options)
        names.push_back(option.name);
    return spaced(names);
}

/// A text between single quotes.
std::string shellWord(std::string_view text) {
    std::string out = "'";
    for (const char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// bash

/// The words that fill the variable "offered" for a kind of value.
std::string bashOffer(WordKind kind, const std::vector<std::string_view> &choices) {
    if (!choices.empty())
        return "offered=$(printf '%s\\n' " + spaced(choices) + ")";
    if (const std::string list = listFor(kind); !list.empty())
        return "offered=$(vantrell-capture list " + list + " 2>/dev/null | sed 's/  .*//')";
    if (kind == WordKind::file || kind == WordKind::folder)
        return std::string("compopt -o filenames; COMPREPLY=($(compgen ") +
               (kind == WordKind::file ? "-f" : "-d") + " -- \"$word\"))";
    return ":";
}

std::string bashValues(const CommandDescription &command) {
    std::string text;
    for (const OptionDescription &option : command.options)
        if (option.takes != Takes::nothing)
            text += "        " + std::string(command.name) + ':' + std::string(option.name) + ") " +
                    bashOffer(option.kind, option.choices) + "; isValue=yes ;;\n";
    return text;
}

// zsh

std::string zshAction(WordKind kind, const std::vector<std::string_view> &choices) {
    if (!choices.empty())
        return '(' + spaced(choices) + ')';
    if (const std::string list = listFor(kind); !list.empty())
        return "{_vantrell_capture_listed " + list + "}";
    return kind == WordKind::file ? "_files" : kind == WordKind::folder ? "_files -/" : " ";
}

/// The summary inside the brackets of an option's line.
std::string zshSummary(std::string_view summary) {
    std::string out;
    for (const char c : summary) {
        if (c == ':' || c == '[' || c == ']')
            out += '\\';
        out += c;
    }
    return out;
}

std::string zshOption(const OptionDescription &option, const std::vector<OptionDescription> &all) {
    std::string excluded(option.name);
    for (const OptionDescription &other : all)
        if (option.isAlternative && other.isAlternative && other.name != option.name)
            excluded += ' ' + std::string(other.name);
    std::string text =
        '(' + excluded + ')' + std::string(option.name) + '[' + zshSummary(option.summary) + ']';
    if (option.takes != Takes::nothing)
        text += (option.takes == Takes::value ? ":" : "::") + std::string(option.value) + ':' +
                zshAction(option.kind, option.choices);
    return shellWord(text);
}

std::string zshCommand(const CommandDescription &command) {
    std::string text = "            " + std::string(command.name) + ") _arguments";
    for (const std::vector<OptionDescription> &options : {command.options, commonOptions()})
        for (const OptionDescription &option : options)
            text += " \\\n                " + zshOption(option, options);
    if (!command.operands.empty())
        text += " \\\n                " +
                shellWord((command.operandChoices.empty() ? "*" : "1") + std::string(":what:") +
                          zshAction(command.operandKind, command.operandChoices));
    return text + " ;;\n";
}

// fish

std::string fishLine(const std::string &condition, const OptionDescription &option) {
    std::string text = "complete -c vantrell-capture" +
                       (condition.empty() ? condition : " -n " + shellWord(condition)) + " -l " +
                       std::string(option.name.substr(2)) + " -d " + shellWord(option.summary);
    if (option.takes == Takes::nothing)
        return text + '\n';
    if (option.takes == Takes::value)
        text += " -r";
    const std::string list = listFor(option.kind);
    if (!option.choices.empty())
        text += " -f -a " + shellWord(spaced(option.choices));
    else if (!list.empty())
        text += " -f -a " + shellWord("(__vantrell_capture_listed " + list + ")");
    else if (option.kind == WordKind::folder)
        text += " -f -a " + shellWord("(__fish_complete_directories)");
    else
        text += " -f";
    return text + '\n';
}

std::string fishCommand(const CommandDescription &command) {
    const std::string name(command.name);
    const std::string seen = "__fish_seen_subcommand_from " + name;
    std::string text = "complete -c vantrell-capture -n __fish_use_subcommand -a " + name + " -d " +
                       shellWord(command.summary) + '\n';
    for (const OptionDescription &option : command.options)
        text += fishLine(seen, option);
    if (!command.operandChoices.empty())
        text += "complete -c vantrell-capture -n " + shellWord(seen) + " -a " +
                shellWord(spaced(command.operandChoices)) + '\n';
    else if (command.operandKind == WordKind::file)
        text += "complete -c vantrell-capture -n " + shellWord(seen) + " -F\n";
    return text;
}

template <typename Function>
std::string forEachCommand(Function function) {
    std::string text;
    for (const CommandGroup &group : commandGroups())
        for (const CommandDescription &command : group.commands)
            text += function(command);
    return text;
}

} // namespace

std::string bashCompletion() {
    std::string names = forEachCommand([](const CommandDescription &c) { return std::string(c.name) + ' '; });
    std::string text = R"(# Made by vantrell-capture --help=bash
_vantrell_capture() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command='' offered='' isValue=no i
    local IFS=$'\n'
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        [[ ${COMP_WORDS[i]} == -* ]] || { command=${COMP_WORDS[i]}; break; }
    done
    case $command:$previous in
)";
    text += forEachCommand(bashValues);
    text += R"(    esac
    if [[ $isValue = no || $word == -* ]]; then
        case $command in
)";
    text += "        '') offered=$(printf '%s\\n' " + names + optionNames(commonOptions()) + ") ;;\n";
    text += forEachCommand([](const CommandDescription &command) {
        std::string line = "        " + std::string(command.name) + ") ";
        if (!command.operands.empty())
            line += bashOffer(command.operandKind, command.operandChoices) + "; ";
        return line + "offered+=$(printf '\\n%s' " + optionNames(command.options) +
               (command.options.empty() ? "" : " ") + optionNames(commonOptions()) + ") ;;\n";
    });
    text += R"(        esac
    fi
    # Not by compgen, which carries out what it finds in names that others gave.
    while read -r i; do
        [[ -n $i && $i == "$word"* ]] || continue
        printf -v i %q "$i"
        COMPREPLY+=("$i")
    done <<<"$offered"
}
complete -F _vantrell_capture vantrell-capture
)";
    return text;
}

std::string zshCompletion() {
    std::string text = R"zsh(#compdef vantrell-capture
# Made by vantrell-capture --help=zsh
_vantrell_capture_listed() {
    local -a listed
    listed=("${(@f)$(vantrell-capture list $1 2>/dev/null)}")
    listed=("${(@)listed%%  *}")
    compadd -a listed
}
_vantrell_capture() {
    local curcontext="$curcontext" state line
    _arguments -C)zsh";
    for (const OptionDescription &option : commonOptions())
        text += " \\\n        " + zshOption(option, commonOptions());
    text += R"zsh( \
        '1:command:->command' '*::argument:->argument'
    case $state in
    command)
        local -a commands=(
)zsh";
    text += forEachCommand([](const CommandDescription &command) {
        return "            " + shellWord(std::string(command.name) + ':' + std::string(command.summary)) +
               '\n';
    });
    text += R"zsh(        )
        _describe command commands ;;
    argument)
        case $words[1] in
)zsh";
    return text + forEachCommand(zshCommand) + R"zsh(        esac ;;
    esac
}
_vantrell_capture "$@"
)zsh";
}

std::string fishCompletion() {
    std::string text = R"(# Made by vantrell-capture --help=fish
function __vantrell_capture_listed
    vantrell-capture list $argv[1] 2>/dev/null | string replace -r '  .*' ''
end
complete -c vantrell-capture -f
)";
    for (const OptionDescription &option : commonOptions())
        text += fishLine({}, option);
    return text + forEachCommand(fishCommand);
}

} // namespace vantrell
