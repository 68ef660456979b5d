// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/AreaMemory.h"

#include "Overlay/AreaSelection.h"

namespace vantrell {

namespace {

std::string key(const std::string &displayId, const char *part) {
    return "area." + displayId + "." + part;
}

} // namespace

void AreaMemory::save(const Rect &rect, const std::string &displayId) {
    m_settings.setNumber(key(displayId, "x"), rect.x);
    m_settings.setNumber(key(displayId, "y"), rect.y);
    m_settings.setNumber(key(displayId, "w"), rect.width);
    m_settings.setNumber(key(displayId, "h"), rect.height);
}

std::optional<Rect> AreaMemory::restore(const std::string &displayId, const Rect &within) const {
    const auto number = [&](const char *part) { return m_settings.number(key(displayId, part)); };
    const auto x = number("x"), y = number("y"), width = number("w"), height = number("h");
    if (!x || !y || !width || !height)
        return std::nullopt;
    const Rect rect{*x, *y, *width, *height};
    // Written so that a stored "nan" fails too.
    const bool isLargeEnough =
        rect.width >= AreaSelection::leastSide && rect.height >= AreaSelection::leastSide;
    return isLargeEnough && contains(within, rect) ? std::optional(rect) : std::nullopt;
}

} // namespace vantrell
