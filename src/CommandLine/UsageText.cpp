// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UsageText.h"

namespace vantrell {

namespace {

constexpr std::size_t lineWidth = 80;
constexpr std::size_t column = 22;

/// Words in lines that begin at a column, the first behind what stands there already.
std::string filled(std::string first, const std::vector<std::string> &words, std::size_t indent) {
    std::string text;
    std::string line = std::move(first);
    bool isFresh = true;
    for (const std::string &word : words) {
        if (!isFresh && line.size() + 1 + word.size() > lineWidth) {
            text += line + '\n';
            line = std::string(indent, ' ');
            isFresh = true;
        }
        line += (isFresh ? "" : " ") + word;
        isFresh = false;
    }
    return text + line + '\n';
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

/// One term and what it means.
std::string explained(const std::string &term, std::string_view meaning) {
    std::string head = "  " + term;
    if (head.size() + 2 > column)
        return head + '\n' + filled(std::string(column, ' '), wordsOf(meaning), column);
    head.resize(column, ' ');
    return filled(std::move(head), wordsOf(meaning), column);
}

std::string explained(const OptionDescription &option) {
    return explained(spelling(option), option.summary);
}

} // namespace

std::string spelling(const OptionDescription &option) {
    const std::string name(option.name);
    std::string value(option.value);
    if (!option.choices.empty()) {
        value.clear();
        for (const std::string_view choice : option.choices)
            value += (value.empty() ? "" : "|") + std::string(choice);
    }
    switch (option.takes) {
    case Takes::value:
        return name + ' ' + value;
    case Takes::optionalValue:
        return name + " [" + value + ']';
    case Takes::nothing:
        break;
    }
    return name;
}

std::vector<std::string> synopsis(const CommandDescription &command) {
    std::vector<std::string> pieces;
    std::string alternatives;
    for (const OptionDescription &option : command.options) {
        if (option.isAlternative) {
            alternatives += (alternatives.empty() ? "[" : " | ") + spelling(option);
            continue;
        }
        if (!alternatives.empty())
            pieces.push_back(std::exchange(alternatives, {}) + ']');
        pieces.push_back('[' + spelling(option) + ']');
    }
    if (!alternatives.empty())
        pieces.push_back(alternatives + ']');
    if (!command.operands.empty())
        pieces.emplace_back(command.operands);
    return pieces;
}

std::string usageText() {
    std::string text = "Usage: vantrell-capture [COMMAND] [OPTION...]\n\n"
                       "Without a command: the application, which lives in the tray; a second start shows\n"
                       "its capture bar.\n";
    for (const CommandGroup &group : commandGroups()) {
        text += '\n' + std::string(group.title) + ":\n";
        for (const CommandDescription &command : group.commands)
            text += explained(std::string(command.name), command.summary);
    }
    text += "\nWith every command:\n";
    for (const OptionDescription &option : commonOptions())
        text += explained(option);
    text += "\nEnvironment:\n";
    for (const Meaning &meaning : environmentMeanings())
        text += explained(std::string(meaning.name), meaning.text);
    text += "\nExit codes:";
    for (const Meaning &code : exitCodeMeanings())
        text += (code.name == exitCodeMeanings().front().name ? " " : ", ") + std::string(code.name) + ' ' +
                std::string(code.text);
    return text + ".\nvantrell-capture COMMAND --help explains a command's options.\n";
}

std::string usageText(const CommandDescription &command) {
    const std::string call = "Usage: vantrell-capture " + std::string(command.name) + ' ';
    const std::vector<std::string> pieces = synopsis(command);
    std::string text = pieces.empty() ? call.substr(0, call.size() - 1) + '\n'
                                      : filled(call, pieces, std::string("Usage: vantrell-capture ").size());
    text += '\n' + filled({}, wordsOf(command.summary), 0);
    if (!command.details.empty())
        text += filled({}, wordsOf(command.details), 0);
    text += '\n';
    for (const OptionDescription &option : command.options)
        text += explained(option);
    for (const OptionDescription &option : commonOptions())
        if (option.name != "--version")
            text += explained(option);
    return text;
}

} // namespace vantrell
