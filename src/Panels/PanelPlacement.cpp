// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelPlacement.h"

#include "Panels/FloatingPanel.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vantrell {

namespace {

constexpr int edgeDistance = 24;

} // namespace

std::optional<QPoint> PanelPlacement::restore(const QScreen &screen, const QSize &size) const {
    const auto x = m_settings.number(key(screen, "x"));
    const auto y = m_settings.number(key(screen, "y"));
    // Far beyond any desktop; also what is no number at all.
    constexpr double most = 1e6;
    if (!x || !y || !(std::abs(*x) < most) || !(std::abs(*y) < most))
        return std::nullopt;
    const QPoint place = screen.geometry().topLeft() + QPoint(int(std::lround(*x)), int(std::lround(*y)));
    if (!screen.geometry().contains(QRect(place, size)))
        return std::nullopt;
    return place;
}

void PanelPlacement::save(const QRect &frame) {
    const QScreen &screen = *screenAt(frame.center());
    const QPoint place = frame.topLeft() - screen.geometry().topLeft();
    m_settings.setNumber(key(screen, "x"), place.x());
    m_settings.setNumber(key(screen, "y"), place.y());
}

std::string PanelPlacement::key(const QScreen &screen, const char *axis) const {
    return "panel." + m_panel + "." + screen.name().toStdString() + "." + axis;
}

std::optional<QPoint> placeOutOfPicture(const FloatingPanel &panel, const QScreen &screen,
                                        const QPoint &usual, const QRect &taken) {
    QList<const QScreen *> screens{&screen};
    for (const QScreen *other : QGuiApplication::screens())
        if (other != &screen)
            screens.append(other);
    std::vector<QPoint> places{usual};
    const QSize size = panel.panelRect().size();
    for (const QScreen *candidate : screens) {
        // Close to the edge only where there is no room otherwise.
        for (const int gap : {edgeDistance, 0}) {
            const QRect room = PanelShell::instance().room(*candidate).adjusted(gap, gap, -gap, -gap);
            const int middle = room.center().x() - size.width() / 2, right = room.right() + 1 - size.width();
            for (const int y : {room.bottom() + 1 - size.height(), room.top()})
                for (const int x : {middle, room.left(), right})
                    places.emplace_back(x, y);
        }
    }
    const auto free = std::ranges::find_if(places, [&](const QPoint &place) {
        return !QRect(place, size).intersects(taken) && panel.mayLieAt(place);
    });
    return free == places.end() ? std::nullopt : std::optional(*free);
}

QScreen *screenOf(const std::string &displayId, const QPoint &place) {
    for (QScreen *screen : QGuiApplication::screens()) {
        if (screen->name().toStdString() == displayId)
            return screen;
    }
    return screenAt(place);
}

} // namespace vantrell
