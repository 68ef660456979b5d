// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Settings.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>
#include <string>
#include <utility>

class QScreen;

namespace vantrell {

class FloatingPanel;

/// Where the user has put a panel on each display, remembered in the settings ("panel.bar.DP-1.x", ".y":
/// points from the display's top-left corner). Main thread.
class PanelPlacement {
public:
    /// The settings outlive it.
    PanelPlacement(Settings &settings, std::string panel) : m_settings(settings), m_panel(std::move(panel)) {}

    /// The remembered place in Qt's coordinates, when a panel of that size still lies whole on the display.
    std::optional<QPoint> restore(const QScreen &screen, const QSize &size) const;
    /// The panel's own part, in Qt's coordinates; remembered for the display that holds its middle.
    void save(const QRect &frame);

private:
    std::string key(const QScreen &screen, const char *axis) const;

    Settings &m_settings;
    const std::string m_panel;
};

/// Where the panel shows in no picture and does not cover `taken`: its usual place on the screen, or else one
/// at that screen's edges or on another; none where all of it is recorded.
std::optional<QPoint> placeOutOfPicture(const FloatingPanel &panel, const QScreen &screen,
                                        const QPoint &usual, const QRect &taken = {});

/// The screen of the display with that id; when there is none, the one at or nearest to the place.
QScreen *screenOf(const std::string &displayId, const QPoint &place);

} // namespace vantrell
