// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/WindowFrameTracker.h"

#include <utility>

namespace vantrell {

namespace {

constexpr double timeToLive = 0.1;

} // namespace

WindowFrameTracker::WindowFrameTracker(Query query, const Point &displayOrigin, const Rect &startingRect,
                                       Clock &clock)
    : m_query(std::move(query)), m_displayOrigin(displayOrigin), m_cachedRect(startingRect), m_clock(clock) {}

Rect WindowFrameTracker::currentRect() {
    const double now = m_clock.hostNow();
    if (now - m_cachedAt < timeToLive)
        return m_cachedRect;
    m_cachedAt = now;
    if (const auto bounds = m_query())
        m_cachedRect = {bounds->x - m_displayOrigin.x, bounds->y - m_displayOrigin.y, bounds->width,
                        bounds->height};
    return m_cachedRect;
}

} // namespace vantrell
