// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/JpegHeader.h"
#include "Media/Camera/JpegScan.h"
#include "Media/Libav/FFmpegPointers.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace vantrell {

/// Unpacks a camera's JPEG pictures: those without a fault and of the usual kind straight into NV12, all
/// others by a library. Thread-bound.
class JpegUnpacker {
public:
    JpegUnpacker();

    /// NV12 in limited range, or full-range planes as they are in the file; they may be overwritten by the
    /// next call. `leastSide` is what the shorter side has to have: the picture may come smaller, which is
    /// quicker; 0 for its own size. False when it is no picture; `strictly`: also when it has any fault.
    bool unpack(std::span<const std::uint8_t> data, AVFrame &to, bool strictly, int leastSide);

private:
    /// False when it is of another kind or has a fault.
    bool paint(std::span<const std::uint8_t> data, AVFrame &to);
    bool readUnit();
    void paintUnit(std::uint8_t *luma, std::uint8_t *chroma, const AVFrame &to) const;

    struct Closer {
        void operator()(void *decompressor) const;
    };
    const std::unique_ptr<void, Closer> m_decompressor;
    JpegHeader m_header;
    JpegScan m_scan;
    /// Of a unit: brightness, then the two colours.
    std::array<JpegBlock, JpegScan::mostBlocks> m_blocks;
};

} // namespace vantrell
