// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/AreaZone.h"
#include "Overlay/Drag.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// The area tool's geometry on one display: what a point hits, how a drag or a key changes the selection, and
/// what may be committed. Points from the display's corner, y downwards. A value type.
class AreaSelection {
public:
    /// How far from an edge it can be gripped.
    static constexpr double reach = 8;
    /// A narrower or lower selection is none.
    static constexpr double leastSide = 4;

    struct Modifiers {
        /// The selection's proportions when this was asked for; a square when it had none.
        bool keepsRatio = false;
        /// It grows to both sides of where the drag began, or of its middle.
        bool fromCentre = false;
        /// Moves what is being drawn.
        bool movesWhole = false;
    };

    explicit AreaSelection(const Size &bounds = {}) : m_bounds(bounds) {}

    const std::optional<Rect> &rect() const { return m_rect; }
    /// Ends a drag.
    void setRect(const std::optional<Rect> &rect);
    const std::optional<Drag> &drag() const { return m_drag; }
    Rect bounds() const { return {0, 0, m_bounds.width, m_bounds.height}; }

    /// Where the action buttons are drawn; none while they are not.
    std::optional<Rect> captureButtonRect;
    std::optional<Rect> recordButtonRect;

    AreaZone areaZone(const Point &at) const;
    /// Inside the bounds, no larger than they are.
    Rect clampedToBounds(const Rect &rect) const;

    /// Begins the drag that belongs to the zone; on a button none.
    void press(const Point &at);
    void dragTo(const Point &at, const Modifiers &modifiers);
    void dragTo(const Point &at) { dragTo(at, {}); }
    /// The selection, following the pointer in a move, as if there were no bounds.
    Rect movedTo(const Point &at) const;
    /// Ends the drag. False when that leaves no selection.
    bool release();

    void moveBy(double across, double down);
    /// Moves the right and the lower edge.
    void stretchBy(double across, double down);
    /// Half of the display, in its middle: something for the keyboard to begin with.
    void selectMiddle();

    /// What is reported: whole-numbered; none when the selection is too small or missing.
    std::optional<Rect> committed() const;

private:
    void draw(const Drag::Draw &draw, const Point &at, const Modifiers &modifiers);
    void resize(const Drag::Resize &resize, const Point &at, const Modifiers &modifiers);
    void moveDrawn(Drag::Draw &draw, const Point &at);

    Size m_bounds;
    std::optional<Rect> m_rect;
    std::optional<Drag> m_drag;
    /// From the pointer to the gripped edge, so that the edge does not jump to the pointer.
    Point m_grip;
    Point m_pointer;
    /// Width by height, while the proportions are kept.
    std::optional<double> m_ratio;
};

} // namespace vantrell
