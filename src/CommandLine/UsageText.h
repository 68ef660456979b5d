// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/CommandTable.h"

#include <string>

namespace vantrell {

/// What `--help` prints.
std::string usageText();

/// What `COMMAND --help` prints.
std::string usageText(const CommandDescription &command);

/// An option as it is typed: "--mic [ID]".
std::string spelling(const OptionDescription &option);

/// How a command is called, in pieces that a line break may come between: "[--mic [ID]]".
std::vector<std::string> synopsis(const CommandDescription &command);

} // namespace vantrell
