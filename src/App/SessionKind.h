// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// What kind of desktop session the program runs in. `none` where there is nothing to show windows on.
enum class SessionKind { none = 1, x11, wayland };

/// From the environment; its variable VANTRELL_BACKEND ("x11" or "null") forces it.
SessionKind sessionKind();

} // namespace vantrell
