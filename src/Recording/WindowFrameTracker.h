// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <functional>
#include <optional>

namespace vantrell {

/// Follows the place of a recorded window, asking the window system at most ten times a second. Main thread.
class WindowFrameTracker {
public:
    /// Asks for the window's bounds now: points, top-left desktop coordinates; none when it cannot be told.
    using Query = std::function<std::optional<Rect>()>;

    /// `displayOrigin` is the display's place on the desktop; `startingRect` is what is reported until the
    /// first good answer. The clock must outlive the tracker.
    WindowFrameTracker(Query query, const Point &displayOrigin, const Rect &startingRect, Clock &clock);

    /// The window's rectangle from the display's top-left corner; the last good one when the window cannot be
    /// asked.
    Rect currentRect();

private:
    Query m_query;
    Point m_displayOrigin;
    Rect m_cachedRect;
    double m_cachedAt = 0;
    Clock &m_clock;
};

} // namespace vantrell
