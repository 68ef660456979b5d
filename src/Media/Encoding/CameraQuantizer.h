// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/Nv12Frame.h"

#include <cstdint>
#include <vector>

namespace vantrell {

/// Chooses the H.264 quantizer for a camera's pictures: the coarser the more they differ from one to the
/// next, by motion or by the noise of a dark room, which would blow the file up and is not missed. Asking the
/// encoder to do that costs a tenth of its time. Thread-bound.
class CameraQuantizer {
public:
    static constexpr int finest = 20;
    static constexpr int coarsest = 28;
    static constexpr int finestOfKeyFrames = finest - 3;
    /// For a face before a small, somewhat noisy sensor.
    static constexpr int plain = 23;

    /// For the picture, which comes after those that were asked about before.
    int next(const Nv12Frame &frame, bool isKeyFrame);

private:
    /// How far the luma is from that of the picture before, in the mean; 0 when it is the first.
    double differenceOf(const Nv12Frame &frame);

    /// Every so many rows of the picture before.
    std::vector<std::uint8_t> m_rows;
    double m_meanDifference = plainDifference;
    int m_quantizer = plain;
    int m_sinceChange = 0;

    static constexpr double plainDifference = 2.7;
};

} // namespace vantrell
