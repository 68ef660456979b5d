// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::bench {

/// Records numbered pictures of a headless sway and lays the movie beside what the compositor sent to a
/// second listener of the same cast: which pictures are in it, and how far from the compositor's own time
/// stamps. Prints both; the exit code.
int measureTiming(double seconds);

} // namespace vantrell::bench
