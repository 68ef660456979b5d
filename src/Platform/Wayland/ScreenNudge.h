// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Lays a transparent pixel on each display for a moment. Some compositors send a picture only when something
/// changes, and of a still screen none at all. Nothing where the compositor has no layer shell. Waits for it,
/// usually some milliseconds; thread-safe.
void nudgeScreens();

} // namespace vantrell
