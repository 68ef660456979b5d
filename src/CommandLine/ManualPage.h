// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// The manual page of the program, section 1, as a source for man.
std::string manualPage();

} // namespace vantrell
