// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Theme.h"

#include "Panels/FloatingPanel.h"
#include "Platform/Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

Appearance *appearanceOfDesktop = nullptr;

/// Relative luminance and contrast as the accessibility guidelines define them.
double luminance(const QColor &color) {
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(float(alpha));
    return color;
}

Theme darkTheme() {
    return {.panel = withAlpha(0x171a19, 0.92),
            .hairline = withAlpha(Qt::white, 0.14),
            .text = 0xe9ebe8,
            .quietText = withAlpha(0xe9ebe8, 0.66),
            .accent = 0x7cc4b7,
            .onAccent = 0x0f1d1a,
            .recording = 0xe5484d,
            .recordingGround = 0xd63b41,
            .onRecording = 0xffffff,
            .hover = withAlpha(Qt::white, 0.08),
            .pressed = withAlpha(Qt::white, 0.17),
            .selected = withAlpha(Qt::white, 0.13),
            .warning = 0xf2a097,
            .focusRing = 0x7cc4b7,
            .isLight = false};
}

Theme lightTheme() {
    return {.panel = withAlpha(0xfcfbf9, 0.95),
            .hairline = withAlpha(Qt::black, 0.11),
            .text = 0x20211f,
            .quietText = withAlpha(0x20211f, 0.68),
            .accent = 0x2f6f66,
            .onAccent = 0xffffff,
            .recording = 0xe5484d,
            .recordingGround = 0xd63b41,
            .onRecording = 0xffffff,
            .hover = withAlpha(Qt::black, 0.05),
            .pressed = withAlpha(Qt::black, 0.12),
            .selected = withAlpha(Qt::black, 0.075),
            .warning = 0xb3261e,
            .focusRing = 0x2f6f66,
            .isLight = true};
}

/// Full colours, a real line around everything.
Theme strongTheme(Theme theme) {
    const QColor ground = theme.isLight ? Qt::white : Qt::black;
    const QColor ink = theme.isLight ? Qt::black : Qt::white;
    theme.panel = ground;
    theme.hairline = ink;
    theme.text = ink;
    theme.quietText = ink;
    theme.accent = theme.isLight ? QColor(0x14423b) : QColor(0xa6f0e2);
    theme.onAccent = ground;
    theme.recordingGround = 0xb3121a;
    theme.hover = withAlpha(ink, 0.2);
    theme.pressed = withAlpha(ink, 0.4);
    theme.selected = withAlpha(ink, 0.3);
    theme.warning = theme.isLight ? QColor(0x8c0f0f) : QColor(0xffc2b8);
    theme.focusRing = theme.isLight ? QColor(0x0040c0) : QColor(0xffe14d);
    return theme;
}

} // namespace

const Theme &Theme::dark() {
    static const Theme theme = darkTheme();
    static const Theme strong = strongTheme(darkTheme());
    return prefersHighContrast() ? strong : theme;
}

const Theme &Theme::light() {
    static const Theme theme = lightTheme();
    static const Theme strong = strongTheme(lightTheme());
    return prefersHighContrast() ? strong : theme;
}

const Theme &Theme::ofDesktop() {
    const QPalette palette = QApplication::palette();
    return of(luminance(palette.color(QPalette::Window)) > luminance(palette.color(QPalette::WindowText)));
}

const Theme &Theme::of(const QWidget &widget) {
    const auto *panel = dynamic_cast<const FloatingPanel *>(widget.window());
    return panel ? panel->theme() : ofDesktop();
}

void setDesktopAppearance(Appearance *appearance) {
    appearanceOfDesktop = appearance;
}

Appearance *desktopAppearance() {
    return appearanceOfDesktop;
}

bool prefersReducedMotion() {
    return (appearanceOfDesktop && appearanceOfDesktop->reducesMotion()) ||
           !qEnvironmentVariableIsEmpty("VANTRELL_REDUCED_MOTION") ||
           QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}

bool prefersHighContrast() {
    if (!qEnvironmentVariableIsEmpty("VANTRELL_HIGH_CONTRAST"))
        return true;
    // Black and white, as only the desktops' themes for high contrast have it.
    constexpr double strongest = 20.5;
    const QPalette palette = QApplication::palette();
    return contrast(palette.color(QPalette::Window), palette.color(QPalette::WindowText)) > strongest;
}

} // namespace vantrell
