// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Platform/X11/X11Connection.h"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

/// The monitors as RANDR has them, the primary one first; the whole screen as one when RANDR knows none.
std::expected<std::vector<Display>, PlatformError> listX11Displays(const X11Connection &connection);

/// What the environment and the X resources say about scales, as the desktop's own toolkits read it.
struct X11ScaleRules {
    /// RESOURCE_MANAGER's text; "Xft.dpi" is taken from it.
    std::string resources;
    /// QT_SCALE_FACTOR and QT_SCREEN_SCALE_FACTORS ("2;1" by place or "DP-1=2;DP-2=1" by name).
    std::string scaleFactor;
    std::string screenScaleFactors;

    static X11ScaleRules fromDesktop(const X11Connection &connection);

    /// Pixels for each point of the monitor with that name and place in the list; at least 1.
    double scaleOf(std::string_view name, std::size_t place) const;
};

} // namespace vantrell
