// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <string>

namespace vantrell {

/// The codes of a PlatformError whose domain is `screenErrorDomain`.
enum class ScreenErrorCode {
    /// There is no desktop session to record.
    noSession = 1,
    noSuchDisplay,
    noSuchWindow,
    /// An area that touches no display or is smaller than a pixel.
    badArea,
    /// The display server lacks something that recording needs; the sentence says what.
    missingExtension,
    unsupportedPixels,
    /// The recorded window was closed.
    windowClosed,
    /// The recorded display was unplugged or switched off.
    displayGone,
    connectionLost,
    outOfMemory,
    encoderFailed,
    /// The desktop has no dialog in which its user could choose what is recorded.
    noDialog,
    /// What was chosen sends no picture.
    noPicture,
    /// The desktop, or its user there, ended the sharing of the screen.
    sharingEnded,
};

inline constexpr const char *screenErrorDomain = "screen";

/// A failure of listing or capturing the screen; `sentence` is what the user reads.
PlatformError screenError(ScreenErrorCode code, std::string sentence);

bool isScreenError(const PlatformError &error, ScreenErrorCode code);

} // namespace vantrell
