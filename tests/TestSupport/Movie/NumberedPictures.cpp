// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Movie/NumberedPictures.h"

#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"

namespace vantrell::testing {

std::vector<NumberedPicture> numberedPicturesIn(const std::filesystem::path &movie, int x, int y) {
    std::vector<NumberedPicture> pictures;
    forEachPicture(movie, [&](const MoviePicture &picture) {
        const auto number = framecode::read(picture.luma + y * picture.lumaStride + x, picture.lumaStride);
        if (number && (pictures.empty() || pictures.back().number != *number))
            pictures.push_back({picture.seconds, *number});
    });
    return pictures;
}

} // namespace vantrell::testing
