// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// The program runs in a sandbox (Flatpak, Snap), from which the desktop is reached through its portals only.
bool isSandboxed();

} // namespace vantrell
