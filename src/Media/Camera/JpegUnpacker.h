// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/FFmpegPointers.h"

#include <cstdint>
#include <memory>
#include <span>

namespace vantrell {

/// Unpacks a camera's JPEG pictures, also those that leave out the usual tables, in about two thirds of the
/// time of FFmpeg's decoder. Thread-bound.
class JpegUnpacker {
public:
    JpegUnpacker();

    /// Full-range planes as they are in the file; they may be overwritten by the next call. `leastSide` is
    /// what the shorter side has to have: the picture may come smaller, which is quicker; 0 for its own size.
    /// False when it is no picture; `strictly`: also when it has any fault.
    bool unpack(std::span<const std::uint8_t> data, AVFrame &to, bool strictly, int leastSide);

private:
    struct Closer {
        void operator()(void *decompressor) const;
    };
    const std::unique_ptr<void, Closer> m_decompressor;
};

} // namespace vantrell
