// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QColor>

namespace vantrell {

/// The colours of a panel: dark, or light where the screen behind it is light; stronger when the desktop asks
/// for high contrast.
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
};

/// Panels do not move or fade: the desktop asks for it, or VANTRELL_REDUCED_MOTION does.
bool prefersReducedMotion();

} // namespace vantrell
