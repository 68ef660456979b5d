// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// What pictures show, which decides how they are best encoded.
enum class PictureContent {
    /// Most stands still, edges are sharp, motion is by whole pixels.
    screen = 1,
    /// All changes a little all the time.
    camera,
    /// The same after a camera's own compression, which leaves some blocks flat and the noise in others.
    jpegCamera,
};

} // namespace vantrell
