// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CursorMode.h"
#include "Platform/Display.h"
#include "Platform/FrameSource.h"
#include "Platform/WindowDescription.h"
#include "Support/Geometry.h"

#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// What kind of thing is captured. The camera is never a CaptureSource: it is the kind of the layer beside
/// one.
enum class CaptureKind { display = 1, area, window, camera };

/// Something on this desktop that can be recorded, as its user or its desktop chose it. It outlives the
/// segments of a recording, each of which takes a FrameSource of its own from it. Main thread.
class CaptureSource {
public:
    /// What is known when it is chosen; what only the pictures will tell is absent.
    struct Facts {
        CaptureKind kind = CaptureKind::display;
        /// The display that holds the capture.
        std::optional<Display> display;
        /// Only of a window.
        std::optional<WindowDescription> window;
        /// Where it is, in the desktop's pixels.
        std::optional<PixelRect> place;
        /// Pixels for each point.
        double scale = 1;
    };

    virtual ~CaptureSource() = default;

    virtual const Facts &facts() const = 0;

    /// Where it is now, in the desktop's pixels; none when that cannot be told.
    virtual std::optional<PixelRect> place() const = 0;

    /// The frames can carry the pointer's place, so that nobody need ask the desktop for it.
    virtual bool tellsPointer() const { return false; }

    /// The pointer can be left out of the pictures without its path being lost; else it is drawn, whatever
    /// is wanted.
    virtual bool separatesPointer() const { return true; }

    /// What names this choice in a later run (CaptureRequest::LetDesktopAsk); none when it has to be chosen
    /// anew.
    virtual std::optional<std::string> restoreToken() const { return std::nullopt; }

    /// Touches nothing until it is opened. What it returns does not need this object any more.
    virtual std::unique_ptr<FrameSource> makeFrames(CursorMode cursor) = 0;
};

} // namespace vantrell
