// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// Who brings updates to a copy that does not update itself: opens the desktop's software centre, or says in
/// a sentence whom to ask. Empty when the software centre opened. Main thread.
std::string showSystemUpdates();

/// The sentence: Flatpak, Snap, or the package manager of the distribution. `osRelease` is the text of
/// /etc/os-release.
std::string systemUpdatesSentence(const std::string &osRelease);

} // namespace vantrell
