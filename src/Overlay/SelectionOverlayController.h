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
    /// its windows are off the screen. It may destroy the controller.
    void begin(ToolMode tool, std::function<bool()> isCursorOverBar,
               std::function<void(SelectionOutcome, ToolMode)> completion);
    void setTool(ToolMode tool);
    ToolMode tool() const;
    void finish(SelectionOutcome outcome);

    /// The user asks with a key for another tool, or to work the capture bar with the keyboard (Tab).
    std::function<void(ToolMode)> onToolWanted;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vantrell
