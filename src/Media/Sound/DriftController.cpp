// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/DriftController.h"

#include <algorithm>

namespace vantrell {

namespace {

/// How much of the slip is made up for in a second. Time stamps jitter by a millisecond or two and the jitter
/// must not be heard: 0.2 turns 1 ms of it into 200 ppm, a third of a cent of pitch, while a slip still
/// halves in about five seconds. A clock that is off by 200 ppm from the start never slips by more than 200
/// ppm / (slipGain / 2) / e, about 0.7 ms, before it is followed.
constexpr double slipGain = 0.2;
/// The accumulated slip is the clock's own error. This is the largest value for which the loop settles
/// without swinging past its goal (critical damping).
constexpr double clockGain = slipGain * slipGain / 4;
/// Sound cards are off by less than 300 ppm; anything near this limit is no clock error but bad time stamps.
constexpr double clockLimit = 0.001;
/// 0.3 % is five cents, below what is heard as a change of pitch. Larger slips than this can mend in good
/// time are mended by cutting, which is not this class's affair.
constexpr double stretchLimit = 0.003;

} // namespace

double DriftController::update(double slip, double seconds) {
    const double wanted = m_integral + slipGain * slip;
    m_stretch = std::clamp(wanted, -stretchLimit, stretchLimit);
    // While the limit holds the stretch back, the slip says nothing about the clock.
    if (m_stretch == wanted)
        m_integral = std::clamp(m_integral + clockGain * slip * seconds, -clockLimit, clockLimit);
    return m_stretch;
}

} // namespace vantrell
