// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/EncoderLoad.h"

#include <cmath>

namespace vantrell {

namespace {

/// Seconds over which the share is a mean: what waits for the encoder is lost after twice that.
constexpr double memory = 0.15;

} // namespace

void EncoderLoad::frameEncoded(double begin, double end) {
    // Rest and work in their order, each with the weight of its length.
    if (m_lastEnd > 0)
        m_busyShare *= std::exp((m_lastEnd - begin) / memory);
    m_busyShare = 1 - (1 - m_busyShare) * std::exp((begin - end) / memory);
    m_lastEnd = end;
}

} // namespace vantrell
