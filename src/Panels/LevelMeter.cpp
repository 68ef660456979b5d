// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LevelMeter.h"

#include "Panels/PanelAccessibility.h"
#include "Panels/PanelShape.h"
#include "Panels/Theme.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace vantrell {

namespace {

/// What a level must reach for the bar to be lit whole: speech that is loud enough lights four of them.
constexpr std::array<double, LevelMeter::barCount> thresholds{0.01, 0.04, 0.1, 0.22, 0.45, 0.8};
constexpr std::array<int, LevelMeter::barCount> heights{8, 13, 20, 15, 22, 16};
constexpr int barWidth = 3;
constexpr int barGap = 3;
constexpr double unlit = 0.18;
/// As many as can be told apart: a level that all but stays is not drawn again.
constexpr int steps = 4;

/// How many bars a level lights, in steps of a bar.
int litSteps(double level) {
    double lit = 0;
    double from = 0;
    for (const double threshold : thresholds) {
        lit += std::clamp((level - from) / (threshold - from), 0.0, 1.0);
        from = threshold;
    }
    return int(std::lround(lit * steps));
}

} // namespace

LevelMeter::LevelMeter(const QString &label, QWidget *parent) : QWidget(parent) {
    installPanelAccessibility();
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(label);
}

void LevelMeter::setLevel(double level) {
    m_level = std::clamp(level, 0.0, 1.0);
    const int lit = litSteps(m_level);
    if (std::exchange(m_lit, lit) != lit)
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
        const double lit = std::clamp(double(m_lit) / steps - bar, 0.0, 1.0);
        painter.setOpacity(unlit + (1 - unlit) * lit);
        painter.fillPath(roundedPath(QRectF(place * (barWidth + barGap), (height() - heights[at]) / 2.0,
                                            barWidth, heights[at]),
                                     barWidth / 2.0),
                         theme.text);
    }
}

} // namespace vantrell
