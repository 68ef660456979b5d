// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// What becomes of the pointer in a recording.
enum class CursorMode {
    /// Drawn into the pictures.
    inPicture = 1,
    leftOut,
    /// Left out of the pictures; its place comes with them (CaptureSource::tellsPointer).
    asMetadata,
};

} // namespace vantrell
