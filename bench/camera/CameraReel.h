// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CameraScene.h"
#include "Platform/CameraSource.h"

#include <cstdint>
#include <span>
#include <vector>

namespace vantrell::bench {

/// A few seconds of a scene, painted beforehand, as a camera sends it: there and back, over and over. Each
/// picture carries its place in the reel as a frame code.
class CameraReel {
public:
    /// YUYV or MJPEG.
    CameraReel(PixelSize size, CameraFormat format, int pictures);

    /// The bytes of the picture that is the `number`-th to be sent.
    std::span<const std::uint8_t> at(std::uint32_t number) const { return m_sent[placeOf(number)]; }
    /// What was painted at a place.
    const CameraScene::Picture &painted(std::size_t place) const { return m_painted[place]; }
    std::size_t length() const { return m_painted.size(); }

private:
    std::size_t placeOf(std::uint32_t number) const;

    std::vector<CameraScene::Picture> m_painted;
    std::vector<std::vector<std::uint8_t>> m_sent;
};

} // namespace vantrell::bench
