// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/BackdropMonitor.h"

#include "Panels/FloatingPanel.h"
#include "Panels/Theme.h"
#include "Platform/Appearance.h"
#include "Support/Geometry.h"

#include <QApplication>
#include <QScreen>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

/// While the backdrop has changed lately, and when it has not for `calmLooks` looks.
constexpr auto interval = 500ms;
constexpr auto calmInterval = 2000ms;
constexpr int calmLooks = 6;
/// What a panel that is dark waits for before it turns light, and the other way round: between them lies what
/// changes nothing, so that a film behind it does not make it flicker.
constexpr double turnsLight = 0.66;
constexpr double turnsDark = 0.5;

/// Another panel of ours lies there: it is not the backdrop.
bool isOurs(const QRect &strip, const FloatingPanel &panel) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget *window) {
        const auto *other = dynamic_cast<const FloatingPanel *>(window);
        return other && other != &panel && other->isVisible() && other->panelFrame().intersects(strip);
    });
}

/// Two strips where the panel's shadow has all but ended, in the desktop's pixels: above and below it, beside
/// it where those cannot be seen.
std::vector<PixelRect> stripsAround(const FloatingPanel &panel) {
    constexpr int from = 18;
    constexpr int depth = 12;
    constexpr std::size_t enough = 2;
    const QScreen *screen = panel.screen();
    const QRect room = screen->geometry();
    const QRect frame = panel.panelFrame();
    const double scale = screen->devicePixelRatio();
    const std::array<QRect, 4> places{QRect(frame.left(), frame.top() - from - depth, frame.width(), depth),
                                      QRect(frame.left(), frame.bottom() + 1 + from, frame.width(), depth),
                                      QRect(frame.left() - from - depth, frame.top(), depth, frame.height()),
                                      QRect(frame.right() + 1 + from, frame.top(), depth, frame.height())};
    std::vector<PixelRect> strips;
    for (const QRect &place : places) {
        const QRect strip = place & room;
        if (strips.size() == enough || strip.isEmpty() || isOurs(strip, panel))
            continue;
        const QPoint inside = strip.topLeft() - room.topLeft();
        PixelRect pixels = toPixels(
            Rect{double(inside.x()), double(inside.y()), double(strip.width()), double(strip.height())},
            scale);
        // As toolkits place their screens: the corner keeps its pixel numbers.
        pixels.x += room.x();
        pixels.y += room.y();
        strips.push_back(pixels);
    }
    return strips;
}

} // namespace

BackdropMonitor::BackdropMonitor(FloatingPanel &panel, StillCapture &stills, Clock &clock,
                                 std::function<void(bool)> changed)
    : m_panel(panel), m_stills(stills), m_clock(clock), m_changed(std::move(changed)) {}

void BackdropMonitor::start() {
    m_scope.cancel();
    if (!m_stills.canWatch()) {
        Appearance *desktop = desktopAppearance();
        m_colours = desktop ? desktop->observe([this] { followColours(); }) : nullptr;
        followColours();
        return;
    }
    m_scope.start(this, &BackdropMonitor::watch);
}

void BackdropMonitor::followColours() {
    m_isLight = desktopAppearance() && desktopAppearance()->isLight();
    m_changed(m_isLight);
}

void BackdropMonitor::stop() {
    m_colours.reset();
    m_scope.cancel();
}

Task<> BackdropMonitor::watch(std::stop_token stop) {
    int looks = 0;
    while (!stop.stop_requested()) {
        double sum = 0;
        int count = 0;
        const std::vector<PixelRect> strips = stripsAround(m_panel);
        for (const PixelRect &strip : strips) {
            const StillCapture::Result still = co_await m_stills.captureArea(strip, stop);
            if (stop.stop_requested())
                co_return;
            if (still && !still->isNull()) {
                sum += lightness(*still);
                ++count;
            }
        }
        const bool isLight = count > 0 ? sum / count > (m_isLight ? turnsDark : turnsLight) : m_isLight;
        if (isLight != m_isLight) {
            looks = 0;
            m_isLight = isLight;
            m_changed(isLight);
        }
        if (stop.stop_requested())
            co_return;
        const bool isCalm = ++looks > calmLooks;
        if (!co_await m_clock.sleep(isCalm ? calmInterval : interval, stop))
            co_return;
    }
}

double lightness(const QImage &picture) {
    // A few hundred points tell as much as all of them.
    constexpr int across = 64;
    constexpr int down = 6;
    double sum = 0;
    for (int row = 0; row < down; ++row) {
        for (int column = 0; column < across; ++column) {
            const QColor color =
                picture.pixelColor(std::min(picture.width() - 1, column * picture.width() / across),
                                   std::min(picture.height() - 1, row * picture.height() / down));
            sum += 0.299 * color.redF() + 0.587 * color.greenF() + 0.114 * color.blueF();
        }
    }
    return sum / (across * down);
}

} // namespace vantrell
