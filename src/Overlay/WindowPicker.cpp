// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/WindowPicker.h"

#include "Overlay/QtGeometry.h"

#include <algorithm>
#include <utility>

namespace vantrell {

void WindowPicker::setWindows(std::vector<WindowDescription> windows) {
    m_windows = std::move(windows);
    if (!lit())
        m_lit.reset();
}

const WindowDescription *WindowPicker::lit() const {
    const auto found = std::ranges::find(m_windows, m_lit.value_or(0), &WindowDescription::id);
    return m_lit && found != m_windows.end() ? &*found : nullptr;
}

bool WindowPicker::light(std::optional<std::uint32_t> id) {
    return std::exchange(m_lit, id) != id;
}

bool WindowPicker::pointAt(const Point &desktopPixel) {
    const auto found = std::ranges::find_if(m_windows, [&](const WindowDescription &window) {
        return contains(toPoints(window.pixels, 1), desktopPixel);
    });
    return light(found == m_windows.end() ? std::nullopt : std::optional(found->id));
}

bool WindowPicker::cycle(bool backward) {
    if (m_windows.empty())
        return clear();
    const auto count = m_windows.size();
    const WindowDescription *before = lit();
    std::size_t next = backward ? count - 1 : 0;
    if (before)
        next = (std::size_t(before - m_windows.data()) + (backward ? count - 1 : 1)) % count;
    return light(m_windows[next].id);
}

bool WindowPicker::clear() {
    return light(std::nullopt);
}

QRegion WindowPicker::visiblePart() const {
    const WindowDescription *window = lit();
    if (!window)
        return {};
    QRegion part(toQt(window->pixels));
    for (const WindowDescription *above = m_windows.data(); above != window; ++above)
        part -= toQt(above->pixels);
    return part;
}

} // namespace vantrell
