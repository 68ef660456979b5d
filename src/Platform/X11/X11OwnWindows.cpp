// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11OwnWindows.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// How long a compositor may show a panel that is gone.
constexpr double traceSeconds = 1;
/// Traces of one drag that are so close in time are one.
constexpr double traceStep = 0.1;

} // namespace

void X11OwnWindows::follow(const std::vector<X11WindowStack::Window> &windows, bool hasCompositor,
                           double now) {
    std::vector<PixelRect> left = m_places;
    m_places.clear();
    for (const X11WindowStack::Window &window : windows) {
        if (window.isPanel && window.isMapped)
            m_places.push_back(window.place);
        // Of those that are not shown when all begins nobody knows since when.
        else if (window.isPanel && !m_hasBegun)
            left.push_back(window.place);
    }
    m_hasBegun = true;
    if (!hasCompositor)
        return m_traces.clear();
    for (const PixelRect &before : left) {
        if (std::ranges::find(m_places, before) != m_places.end())
            continue;
        if (!m_traces.empty() && now - m_traces.back().since < traceStep) {
            m_traces.back().place = united(m_traces.back().place, before);
            m_traces.back().until = now + traceSeconds;
        } else {
            m_traces.push_back({before, now, now + traceSeconds});
        }
    }
}

QRegion X11OwnWindows::seenOn(const PixelRect &area, int margin) const {
    QRegion seen;
    const auto add = [&](const PixelRect &place) {
        if (!intersection(place, area).isEmpty())
            seen += QRect(place.x - margin, place.y - margin, place.width + 2 * margin,
                          place.height + 2 * margin);
    };
    std::ranges::for_each(m_places, add);
    for (const Trace &trace : m_traces)
        add(trace.place);
    return seen & QRect(area.x, area.y, area.width, area.height);
}

std::optional<double> X11OwnWindows::looksAt() const {
    if (m_traces.empty())
        return std::nullopt;
    return std::ranges::min(m_traces, {}, &Trace::until).until;
}

bool X11OwnWindows::look(double now) {
    return std::erase_if(m_traces, [now](const Trace &trace) { return trace.until <= now; }) > 0;
}

} // namespace vantrell
