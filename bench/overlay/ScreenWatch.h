// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Looks at single pixels of the screen over a connection of its own. One thread at a time.
class ScreenWatch {
public:
    ScreenWatch();

    /// Paints the empty desktop.
    void paintDesktop(std::uint32_t rgb);
    /// Waits until none of these pixels has the desktop's colour, or all have it; when that was, in host
    /// time. Ends the program when it does not happen.
    double waitUntil(const std::vector<vantrell::Point> &pixels, bool areCovered);

private:
    bool isDesktop(const vantrell::Point &pixel) const;

    std::unique_ptr<vantrell::X11Connection> m_connection;
    std::uint32_t m_desktop = 0;
};
