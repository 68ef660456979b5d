// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vantrell::testing {

/// A picture with a frame code, and when in the movie it begins.
struct NumberedPicture {
    double seconds;
    std::uint32_t number;
};

/// The numbers that a movie shows in its top left corner, or so far from it, each where it first appears;
/// pictures without a readable one are left out.
std::vector<NumberedPicture> numberedPicturesIn(const std::filesystem::path &movie, int x = 0, int y = 0);

} // namespace vantrell::testing
