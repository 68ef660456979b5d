// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace vantrell {

/// What somebody wants to capture, before the desktop has said whether there is such a thing.
struct CaptureRequest {
    struct WholeDisplay {
        /// Absent: the primary one.
        std::optional<std::string> id;
    };
    struct Area {
        /// In the desktop's pixels.
        PixelRect pixels;
    };
    struct Window {
        std::uint32_t id = 0;
    };
    /// The desktop's own dialog asks the user.
    struct LetDesktopAsk {
        enum class Kind { display = 1, window };
        Kind kind = Kind::display;
        /// What was chosen in an earlier run is taken again without asking.
        std::optional<std::string> restoreToken;
    };

    std::variant<WholeDisplay, Area, Window, LetDesktopAsk> what;
    /// The pointer shall be left out of the pictures where its path is known all the same.
    bool separatesPointer = false;
    /// Nobody wants to see the pointer, or to know where it is.
    bool hidesPointer = false;
    /// For a single picture: no desktop is asked for a whole stream where it need not be.
    bool isForStill = false;
};

} // namespace vantrell
