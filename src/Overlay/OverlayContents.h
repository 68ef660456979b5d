// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/ActionButtons.h"
#include "Overlay/AreaSelection.h"
#include "Overlay/OverlayScene.h"
#include "Overlay/ToolMode.h"
#include "Platform/Display.h"
#include "Platform/WindowDescription.h"

#include <QImage>
#include <QRegion>
#include <QString>
#include <Qt>

#include <optional>

namespace vantrell {

/// What the overlay on one display is about at a moment: the tool with all that it has found there. What is
/// shown follows from it. A value type.
struct OverlayContents {
    explicit OverlayContents(const Display &on);

    Display display;
    ToolMode tool = ToolMode::area;

    AreaSelection area;
    /// The selection is shown by another view for as long as the pointer is there.
    bool isMovedExternally = false;
    std::optional<ActionButtons> buttons;

    std::optional<WindowDescription> litWindow;
    /// What of it can be seen, in the display's pixels.
    QRegion litPart;
    QImage windowIcon;
    bool hasWindows = true;
    /// The window tool leaves it to the desktop's own dialog which window it is.
    bool desktopPicks = false;
    /// The screen tool would take this display.
    bool isLit = false;

    /// Instead of the hint; empty: the hint.
    QString notice;
    bool isHelpShown = false;

    bool isDragging() const { return area.drag().has_value(); }
    /// The selection that is shown here.
    std::optional<Rect> shownSelection() const;
    /// A rectangle of points in the display's pixels.
    QRect devicePixels(const Rect &rect) const;
    /// The whole display, in its pixels.
    QRect wholeDisplay() const { return {0, 0, display.pixels.width, display.pixels.height}; }
    /// Where the selection has them; `bar` is the capture bar's place, which they keep off.
    void placeButtons(const Rect &bar);
    void takeButtons();
    std::optional<ActionButtons::Kind> buttonAt(const Point &at) const;
    /// None: as it is, while a drag lasts.
    std::optional<Qt::CursorShape> cursorAt(const Point &at) const;
    /// All but the loupe and the gap for the bar.
    OverlayScene scene() const;

private:
    void addArea(OverlayScene &scene) const;
    void addWindow(OverlayScene &scene) const;
    void addScreen(OverlayScene &scene) const;
    void addHints(OverlayScene &scene) const;
    QString hint() const;
};

} // namespace vantrell
