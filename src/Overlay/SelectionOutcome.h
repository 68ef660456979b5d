// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureRequest.h"
#include "Platform/Display.h"
#include "Platform/WindowDescription.h"
#include "Support/Geometry.h"

#include <variant>

namespace vantrell {

/// What the user picked on the selection overlay. `record`: a recording; else a still.
struct SelectionOutcome {
    struct Region {
        /// Points from the display's top-left corner, whole numbers.
        Rect rect;
        Display display;
        bool record = true;
    };
    struct WholeDisplay {
        Display display;
        bool record = true;
    };
    struct Window {
        WindowDescription window;
        /// The one that holds it.
        Display display;
        bool record = true;
    };
    /// The desktop's own dialog asks what it shall be.
    struct DesktopPicker {
        CaptureRequest::LetDesktopAsk what;
        /// Where the application shows what belongs to it until the choice is made.
        Display display;
        bool record = true;
    };
    struct Dismissed {};

    std::variant<Region, WholeDisplay, Window, DesktopPicker, Dismissed> picked = Dismissed{};

    bool isCancelled() const { return std::holds_alternative<Dismissed>(picked); }
};

} // namespace vantrell
