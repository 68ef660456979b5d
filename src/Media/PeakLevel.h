// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <span>

namespace vantrell {

/// The largest distance from zero among the samples, at most 1: what a level meter shows. 0 for none.
double peakLevel(std::span<const float> samples);

} // namespace vantrell
