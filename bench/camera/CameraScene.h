// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <vector>

namespace vantrell::bench {

/// Somebody who talks in front of a room, as a small sensor sees it: soft edges, a head that sways, a mouth
/// that moves, light that flickers a little, and noise everywhere that is new in each picture and spread over
/// neighbouring pixels. Deterministic; the same numbers give the same picture.
class CameraScene {
public:
    explicit CameraScene(PixelSize size);

    /// Planes without gaps: brightness, then the two colour differences at half size each way. Limited range,
    /// BT.601.
    struct Picture {
        std::vector<std::uint8_t> y, cb, cr;
    };
    Picture paint(int number) const;
    /// The same as YUYV.
    std::vector<std::uint8_t> packed(const Picture &picture) const;

private:
    PixelSize m_size;
    Picture m_room;
    /// Far larger than a picture: each takes its noise from another place in it.
    std::vector<std::int8_t> m_noise;
};

} // namespace vantrell::bench
