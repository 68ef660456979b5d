// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QColor>

class QWidget;

namespace vantrell {

class Appearance;

/// The colours of a panel: dark, or light where the screen behind it is light; stronger when the desktop asks
/// for high contrast. Main thread.
struct Theme {
    QColor panel;
    /// The line around a panel: of light on top of the dark form, a border in the light one.
    QColor hairline;
    QColor text;
    QColor quietText;
    /// The one thing to do next, and what is written on it.
    QColor accent;
    QColor onAccent;
    /// Means recording and nothing else.
    QColor recording;
    /// The same red as a ground for words, deep enough that `onRecording` can be read on it.
    QColor recordingGround;
    QColor onRecording;
    QColor hover;
    QColor pressed;
    /// A control that is switched on.
    QColor selected;
    QColor warning;
    QColor focusRing;
    bool isLight = false;

    static const Theme &dark();
    static const Theme &light();
    static const Theme &of(bool onLightBackdrop) { return onLightBackdrop ? light() : dark(); }
    /// For windows among those of other applications: light when the desktop's own are.
    static const Theme &ofDesktop();
    /// The panel's that the widget is part of; the desktop's when it is part of none.
    static const Theme &of(const QWidget &widget);
};

/// What is known of the desktop's wishes, for all panels: it outlives them or is taken back with null.
void setDesktopAppearance(Appearance *appearance);
Appearance *desktopAppearance();

/// Panels do not move or fade: the desktop asks for it, or VANTRELL_REDUCED_MOTION does.
bool prefersReducedMotion();

/// The desktop's colours are of the highest contrast, or VANTRELL_HIGH_CONTRAST is set.
bool prefersHighContrast();

} // namespace vantrell
