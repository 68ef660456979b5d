// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/LoupePixels.h"

#include <cmath>
#include <cstdlib>

namespace vantrell {

std::optional<Loupe> LoupePixels::loupe(const OverlayContents &contents, const QRect &selected,
                                        const Point &pointer) const {
    const std::optional<Drag> &drag = contents.area.drag();
    if (!drag || std::holds_alternative<Drag::Move>(drag->kind))
        return std::nullopt;
    // The edge that follows the pointer, which it need not touch.
    const auto nearest = [](double at, int low, int high) {
        return std::abs(at - low) < std::abs(at - high) ? low : high;
    };
    const double scale = contents.display.scale;
    const QPoint at(int(std::lround(pointer.x * scale)), int(std::lround(pointer.y * scale)));
    const auto *resize = std::get_if<Drag::Resize>(&drag->kind);
    const bool followsX = !resize || resize->anchorX, followsY = !resize || resize->anchorY;
    Loupe loupe;
    loupe.middle = {followsX ? nearest(at.x(), selected.left(), selected.left() + selected.width()) : at.x(),
                    followsY ? nearest(at.y(), selected.top(), selected.top() + selected.height()) : at.y()};
    loupe.selection = selected;
    loupe.frame = Loupe::placed(pointer, contents.area.bounds());
    loupe.picture = m_picture;
    loupe.pictureCorner = m_corner;
    return loupe;
}

QRect LoupePixels::missing(const Loupe &loupe, const QRect &wholeDisplay) const {
    const QRect wanted = loupe.shownPixels() & wholeDisplay;
    if (wanted.isEmpty() || m_picture.rect().translated(m_corner).contains(wanted))
        return {};
    // More than is shown, so that not every step of a drag asks.
    constexpr int surroundings = 96;
    return wanted.adjusted(-surroundings, -surroundings, surroundings, surroundings) & wholeDisplay;
}

} // namespace vantrell
