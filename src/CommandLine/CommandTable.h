// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace vantrell {

/// What a shell can offer for a word of the command line.
enum class WordKind { anything = 1, file, folder, display, window, microphone, camera, project };

enum class Takes { nothing = 1, value, optionalValue };

/// An option of a command, as it is read, explained and completed.
struct OptionDescription {
    std::string_view name;
    Takes takes = Takes::nothing;
    /// What its value is called in help: "ID".
    std::string_view value;
    std::string_view summary;
    WordKind kind = WordKind::anything;
    /// The words that its value may be; empty: any.
    std::vector<std::string_view> choices;
    /// One of several options of which only one can be given: they stand next to each other.
    bool isAlternative = false;
};

/// A command, as it is read, explained and completed.
struct CommandDescription {
    std::string_view name;
    std::string_view summary;
    std::vector<OptionDescription> options;
    /// What its words without dashes are called in help: "FILE...". Empty: it takes none.
    std::string_view operands;
    WordKind operandKind = WordKind::anything;
    std::vector<std::string_view> operandChoices;
    /// More than the summary, in sentences.
    std::string_view details;

    /// The option of that name, or null.
    const OptionDescription *option(std::string_view option) const;
};

/// Commands that belong together.
struct CommandGroup {
    std::string_view title;
    std::vector<CommandDescription> commands;
};

/// A variable of the environment, or an exit code, and what it means.
struct Meaning {
    std::string_view name;
    std::string_view text;
};

// The one description of the command line: the parser, --help, the manual page and the shells' completions
// are made from it.

const std::vector<CommandGroup> &commandGroups();
/// The command of that name, or null.
const CommandDescription *findCommand(std::string_view name);
/// Options that every command takes.
const std::vector<OptionDescription> &commonOptions();
std::span<const Meaning> environmentMeanings();
std::span<const Meaning> exitCodeMeanings();

} // namespace vantrell
