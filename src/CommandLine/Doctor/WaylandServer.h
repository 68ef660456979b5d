// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string>

namespace vantrell {

/// The program that answers at WAYLAND_DISPLAY ("kwin_wayland"); empty when it does not show its name, none
/// when nobody answers. Blocks for as long as the compositor does; any thread.
std::optional<std::string> waylandCompositor();

} // namespace vantrell
