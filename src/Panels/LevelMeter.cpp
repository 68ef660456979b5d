// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LevelMeter.h"

#include "Panels/PanelAccessibility.h"
#include "Panels/PanelShape.h"
#include "Panels/Theme.h"

#include <QPainter>

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

/// What a level must reach for the bar to be lit: speech that is loud enough lights four of them.
constexpr std::array<double, LevelMeter::barCount> thresholds{0.01, 0.04, 0.1, 0.22, 0.45, 0.8};
constexpr std::array<int, LevelMeter::barCount> heights{8, 13, 20, 15, 22, 16};
constexpr int barWidth = 3;
constexpr int barGap = 3;
constexpr double unlit = 0.18;

} // namespace

LevelMeter::LevelMeter(const QString &label, QWidget *parent) : QWidget(parent) {
    installPanelAccessibility();
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(label);
    // One step between two states a tenth of a second apart: more would cost more than it shows.
    m_settling.setSingleShot(true);
    m_settling.setInterval(50);
    QObject::connect(&m_settling, &QTimer::timeout, this, [this] { update(); });
}

void LevelMeter::setLevel(double level) {
    m_level = std::clamp(level, 0.0, 1.0);
    const int lit =
        int(std::ranges::count_if(thresholds, [this](double threshold) { return m_level >= threshold; }));
    if (lit == m_lit)
        return;
    m_litBefore = m_settling.isActive() ? m_litBefore : m_lit;
    m_lit = lit;
    if (!prefersReducedMotion())
        m_settling.start();
    update();
}

QSize LevelMeter::sizeHint() const {
    return {barCount * barWidth + (barCount - 1) * barGap, *std::ranges::max_element(heights)};
}

void LevelMeter::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme &theme = Theme::of(*this);
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    for (int bar = 0; bar < barCount; ++bar) {
        const auto at = std::size_t(bar);
        const int place = isMirrored ? barCount - 1 - bar : bar;
        const double target = bar < m_lit ? 1 : unlit;
        const double before = bar < m_litBefore ? 1 : unlit;
        painter.setOpacity(m_settling.isActive() ? (target + before) / 2 : target);
        painter.fillPath(roundedPath(QRectF(place * (barWidth + barGap), (height() - heights[at]) / 2.0,
                                            barWidth, heights[at]),
                                     barWidth / 2.0),
                         theme.text);
    }
}

} // namespace vantrell
