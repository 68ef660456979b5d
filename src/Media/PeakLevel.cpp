// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/PeakLevel.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

double peakLevel(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample)); // a sample that is no number loses against any peak
    return std::min(double(peak), 1.0);
}

} // namespace vantrell
