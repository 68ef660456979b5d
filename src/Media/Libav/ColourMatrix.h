// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// How brightness and colour differences were made of red, green and blue. Primaries and transfer are
/// BT.709's either way, and the range is limited.
enum class ColourMatrix {
    /// Screens: we make it ourselves.
    bt709 = 1,
    /// Cameras: what they send, and it is cheaper to say so than to change every pixel.
    bt601,
};

/// The matrix's number in video streams and movie files.
constexpr int h273Number(ColourMatrix matrix) {
    return matrix == ColourMatrix::bt601 ? 6 : 1;
}

} // namespace vantrell
