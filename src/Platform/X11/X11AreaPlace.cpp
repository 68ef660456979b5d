// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11AreaPlace.h"

#include <algorithm>

namespace vantrell {

X11AreaPlace::X11AreaPlace(const Display &display)
    : m_display(display.id), m_isWhole(true), m_displayPixels(display.pixels), m_place(display.pixels) {}

X11AreaPlace::X11AreaPlace(const Display &display, const PixelRect &area)
    : m_display(intersection(display.pixels, area) == area ? std::optional(display.id) : std::nullopt),
      m_isWhole(false), m_displayPixels(display.pixels), m_place(area) {}

PixelRect X11AreaPlace::place() const {
    const std::scoped_lock lock(m_mutex);
    return m_place;
}

bool X11AreaPlace::follow(const std::vector<X11Monitor> &monitors) {
    if (!m_display)
        return true;
    const auto found = std::ranges::find(monitors, *m_display, &X11Monitor::id);
    if (found == monitors.end())
        return false;
    const std::scoped_lock lock(m_mutex);
    if (m_isWhole) {
        m_place = found->pixels;
    } else {
        m_place.x += found->pixels.x - m_displayPixels.x;
        m_place.y += found->pixels.y - m_displayPixels.y;
    }
    m_displayPixels = found->pixels;
    return true;
}

} // namespace vantrell
