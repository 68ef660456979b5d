// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::bench {

/// Records a headless sway in which numbers change, and lays the movie beside the pictures that the portal's
/// part for sway has noted: which of them are in it, and how far from its time stamps. Prints both; the exit
/// code.
int measureTiming(double seconds);

} // namespace vantrell::bench
