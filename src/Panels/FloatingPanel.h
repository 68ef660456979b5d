// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/Theme.h"

#include <QRect>
#include <QWidget>

#include <functional>

namespace vantrell {

/// A window of the application that floats above all others: without a frame, rounded, with one soft shadow
/// where a compositor blends it and a shaped window without one where none does. It never takes the keyboard
/// from the application that is worked with, and is marked as ours, so that recordings leave it out.
///
/// The widget is larger than the panel by `shadowMargin` on every side where there is a shadow; lay children
/// out inside `panelRect`.
class FloatingPanel : public QWidget {
public:
    struct Options {
        /// Half the height: a capsule.
        double radius = 14;
        /// The user may drag the panel by any place that is no control.
        bool isMovable = true;
        /// Draws the panel's own shape; else the subclass draws all.
        bool drawsPanel = true;
    };
    explicit FloatingPanel(Options options);

    /// Shown above everything without taking the focus; again above everything when it was shown already.
    void showPanel();
    const Theme &theme() const;
    void setOnLightBackdrop(bool light);
    QRect panelRect() const;
    int shadowMargin() const;
    /// The panel's own part at `topLeft` of the desktop, in Qt's coordinates; moved inside the screen's
    /// available part.
    void placePanel(const QPoint &topLeft);

    /// The user has put it elsewhere: the panel's own part, in Qt's coordinates.
    std::function<void(QRect)> onMoved;
};

/// Marks a window as the application's own, which captures leave out; for windows that are no FloatingPanel.
void markAsOwnWindow(QWidget &window);

} // namespace vantrell
