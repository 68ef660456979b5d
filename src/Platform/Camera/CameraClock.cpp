// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/CameraClock.h"

#include <algorithm>

namespace vantrell {

namespace {

/// Longer under way than any queue of buffers is: another clock's time.
constexpr double longestUnderWay = 2;
/// Clocks are read one after the other.
constexpr double mostAhead = 0.005;
/// Two pictures of one moment: a tick of the movie's clock apart.
constexpr double smallestStep = 1.0 / 90000;
/// How much one picture says about how long all are under way.
constexpr double newShare = 0.1;

} // namespace

double CameraClock::hostTime(std::optional<double> told, double arrival) {
    const double underWay = told ? arrival - *told : 0;
    const bool isTrusted = told && *told > 0 && underWay > -mostAhead && underWay < longestUnderWay &&
                           (!m_last || *told > *m_last);
    if (isTrusted)
        m_underWay += newShare * (underWay - m_underWay);
    double time = isTrusted ? *told : arrival - m_underWay;
    if (m_last)
        time = std::max(time, *m_last + smallestStep);
    m_last = time;
    return time;
}

} // namespace vantrell
