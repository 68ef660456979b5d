// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/CameraQuantizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vantrell {

namespace {

constexpr int rowStep = 8;
constexpr double inertia = 0.07;
/// Quantizer steps for each doubling of the difference: half of what would keep the size.
constexpr double stepsPerDoubling = 2.4;
/// Pictures between two changes: the eye sees a quantizer that swings.
constexpr int steadyPictures = 15;
constexpr double worthwhile = 0.75;
constexpr int keyFrameSteps = CameraQuantizer::finest - CameraQuantizer::finestOfKeyFrames;

} // namespace

int CameraQuantizer::next(const Nv12Frame &frame, bool isKeyFrame) {
    // A picture that came twice says nothing.
    if (const double difference = differenceOf(frame); difference > 0)
        m_meanDifference += (difference - m_meanDifference) * inertia;
    const double wanted = plain + stepsPerDoubling * std::log2(m_meanDifference / plainDifference);
    if (++m_sinceChange >= steadyPictures && std::abs(wanted - m_quantizer) > worthwhile) {
        m_quantizer = std::clamp(int(std::lround(wanted)), finest, coarsest);
        m_sinceChange = 0;
    }
    return isKeyFrame ? m_quantizer - keyFrameSteps : m_quantizer;
}

double CameraQuantizer::differenceOf(const Nv12Frame &frame) {
    const auto [width, height] = frame.picture();
    const int rows = height / rowStep;
    const std::size_t size = std::size_t(width) * std::size_t(rows);
    const bool isFirst = m_rows.size() != size;
    m_rows.resize(size);
    std::uint64_t sum = 0;
    for (int row = 0; row < rows; ++row) {
        const std::uint8_t *const now = frame.luma() + std::ptrdiff_t(row) * rowStep * frame.stride();
        std::uint8_t *const before = m_rows.data() + std::ptrdiff_t(row) * width;
        std::uint32_t inRow = 0;
        for (int x = 0; x < width; ++x)
            inRow += std::uint32_t(std::abs(int(now[x]) - int(before[x])));
        sum += inRow;
        std::copy_n(now, width, before);
    }
    return isFirst || size == 0 ? 0 : double(sum) / double(size);
}

} // namespace vantrell
