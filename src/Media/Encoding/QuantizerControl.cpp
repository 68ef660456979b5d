// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/QuantizerControl.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

/// A frame moves when more than this share of it changed.
constexpr double movingShare = 0.05;
/// Quantizer steps for each doubling of the detail.
constexpr double stepsPerDoubling = 2.4;
/// The quantizer's step size doubles every six.
constexpr double stepsPerSizeDoubling = 6;
constexpr int keyFrameSteps = QuantizerControl::finest - QuantizerControl::finestOfKeyFrames;
constexpr double inertia = 0.1;
/// A cut counts as at most so many times the mean.
constexpr double mostGrowth = 4;
constexpr double changeInterval = 0.25;
/// Once nothing large has moved for this long, what is there is sharpened.
constexpr double calmInterval = 0.3;

} // namespace

int QuantizerControl::quantizer(bool isKeyFrame) const {
    return isKeyFrame ? m_quantizer - keyFrameSteps : m_quantizer;
}

bool QuantizerControl::isCalm(double hostTime) const {
    return hostTime - m_movedAt >= calmInterval;
}

void QuantizerControl::frameEncoded(double hostTime, int changedBlocks, std::size_t bytes, bool isKeyFrame) {
    if (isKeyFrame)
        return;
    if (changedBlocks < movingShare * m_blocks) {
        if (isCalm(hostTime)) {
            m_quantizer = finest;
            m_detail = plainDetail;
        }
        return;
    }
    m_movedAt = hostTime;
    const double coarseness = std::exp2((m_quantizer - finest) / stepsPerSizeDoubling);
    const double detail = double(bytes) * 8 / changedBlocks * coarseness;
    // One frame that is all new, at a cut, says little about those that follow.
    const double most = mostGrowth * std::max(m_detail, plainDetail);
    m_detail += (std::min(detail, most) - m_detail) * inertia;
    if (hostTime - m_changedAt < changeInterval)
        return;
    const double wanted =
        finest + stepsPerDoubling * std::log2(std::max(m_detail, plainDetail) / plainDetail);
    // Less than a step is not worth that standing parts are encoded once more.
    if (std::abs(wanted - m_quantizer) < 1)
        return;
    m_quantizer = std::clamp(int(std::lround(wanted)), finest, coarsest);
    m_changedAt = hostTime;
}

} // namespace vantrell
