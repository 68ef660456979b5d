// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/SelectionOutcome.h"
#include "Overlay/ToolMode.h"
#include "Platform/CaptureBackend.h"
#include "Platform/StillCapture.h"
#include "Support/Settings.h"

#include <QRect>

#include <functional>
#include <memory>

class QWidget;

namespace vantrell {

/// The selection overlay: a window on each display through which the user says what to capture. Main thread.
class SelectionOverlayController {
public:
    /// All outlive the controller.
    struct Services {
        CaptureBackend &capture;
        /// The picture that the overlay lies on where no compositor blends.
        StillCapture &stills;
        Settings &settings;
    };

    explicit SelectionOverlayController(Services services);
    ~SelectionOverlayController();

    /// Shows it. `completion` is called once, when something was picked or the overlay was dismissed; by then
    /// its windows are off the screen. It may destroy the controller. An overlay that is up already ends as
    /// dismissed first.
    void begin(ToolMode tool, std::function<bool()> isCursorOverBar,
               std::function<void(SelectionOutcome, ToolMode)> completion);
    void setTool(ToolMode tool);
    ToolMode tool() const;
    /// Does nothing when no overlay is up.
    void finish(SelectionOutcome outcome);
    bool isUp() const;
    /// The capture bar has come, gone or moved.
    void followBar();
    /// The overlay has the keyboard again, after something else of ours was worked with.
    void takeKeyboard();

    /// The user asks with a key for another tool. Not set: the overlay changes its tool by itself.
    std::function<void(ToolMode)> onToolWanted;
    /// The user asks with a key (F6, or Tab with the area tool) to work the capture bar with the keyboard.
    std::function<void()> onBarWanted;
    /// Its windows have come onto the screen above everything, at first or anew; one of them: what shall lie
    /// above it is raised now.
    std::function<void(QWidget &window)> onShown;
    /// A picture of the screen is about to be taken, to lie on: what of ours would be in it is hidden now,
    /// and true when something was; and it is taken, before the windows come: what was hidden comes back.
    std::function<bool()> onPictureWanted;
    std::function<void()> onPictureTaken;
    /// Where the capture bar is, in Qt's coordinates; empty while it is hidden. The action buttons keep off
    /// it.
    std::function<QRect()> barFrame;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vantrell
