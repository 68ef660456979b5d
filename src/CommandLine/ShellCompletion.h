// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

// The completion scripts of the shells, made from the command table. What is there to record and the
// account's projects are asked of `vantrell-capture list` when they are wanted.

std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();

} // namespace vantrell
