// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// Hands an address (a page's or a file's) or a path to the program that the desktop has for it; false when
/// there is no desktop to show it on, or nothing to open it with. Does not wait for the program. Main thread.
bool openWithDesktop(const std::string &address);

} // namespace vantrell
