// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/FittedPicture.h"
#include "Platform/FrameSource.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

namespace vantrell {

/// Makes of a source whose picture changes its size one whose picture keeps it, for every backend. As long as
/// the source has the picture's size, what it fetched is passed on untouched. Capture thread.
class FittingStage {
public:
    explicit FittingStage(PixelSize picture) : m_picture(picture), m_fitted(picture) {}

    /// The update in the picture's own pixels, valid until the next call and the source's next one. Fails
    /// with `unsupportedPixels` when the pixels are of another kind than BGRX in memory.
    std::expected<std::span<const FramePatch>, PlatformError> fit(const FrameUpdate &update);

private:
    void remember(PixelSize size, std::span<const FramePatch> patches);

    const PixelSize m_picture;
    FittedPicture m_fitted;
    /// The source's whole picture, kept only while it has another size.
    std::vector<std::uint8_t> m_whole;
    PixelSize m_wholeSize;
    FramePatch m_patch;
    bool m_hasPicture = false;
};

} // namespace vantrell
