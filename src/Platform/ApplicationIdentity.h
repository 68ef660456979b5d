// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// The application's name on the bus, of its desktop entry (".desktop" behind it) and of its icon.
inline constexpr const char *applicationId = "app.vantrell.Capture";
inline constexpr const char *applicationName = "Vantrell Capture";

} // namespace vantrell
