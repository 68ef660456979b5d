// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

namespace vantrell::testing {

/// One decoded picture of a movie.
struct MoviePicture {
    double seconds = 0;
    /// Time stamp in the track's ticks of 1/90000 s or whatever the file has.
    std::int64_t ticks = 0;
    int width = 0;
    int height = 0;
    bool isKey = false;
    const std::uint8_t *luma = nullptr;
    const std::uint8_t *cb = nullptr;
    const std::uint8_t *cr = nullptr;
    std::ptrdiff_t lumaStride = 0;
    std::ptrdiff_t chromaStride = 0;
    /// BT.709, limited range, in every field that says so.
    bool isTaggedBt709 = false;

    struct Colour {
        int y;
        int cb;
        int cr;
    };
    Colour at(int x, int y) const;
};

/// Decodes the movie's picture track with FFmpeg and shows every picture in order. Returns the movie's
/// duration in seconds, or less than 0 when it cannot be read.
double forEachPicture(const std::filesystem::path &movie,
                      const std::function<void(const MoviePicture &)> &visit);

} // namespace vantrell::testing
