// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/FrameRateLimiter.h"

#include <algorithm>

namespace vantrell {

void FrameRateLimiter::frameTaken(double now) {
    m_full = std::max(m_full, now) + m_interval;
}

} // namespace vantrell
