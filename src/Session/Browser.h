// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// Shows a page in the user's browser; false when there is no desktop to show it on, or no way to open it.
/// Does not wait for the browser. Main thread.
bool openInBrowser(const std::string &url);

} // namespace vantrell
