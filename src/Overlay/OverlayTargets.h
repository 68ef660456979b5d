// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/OverlayViews.h"
#include "Overlay/SelectionOutcome.h"
#include "Overlay/ToolMode.h"
#include "Overlay/WindowPicker.h"
#include "Platform/CaptureBackend.h"
#include "Support/Geometry.h"

#include <QTimer>

#include <functional>
#include <optional>
#include <string>

namespace vantrell {

/// What the window and the screen tool would take: the window or the display that is lit, by the pointer or
/// by keys. Main thread.
class OverlayTargets {
public:
    /// Both outlive it.
    OverlayTargets(CaptureBackend &capture, const OverlayViews &views);

    ToolMode tool() const { return m_tool; }
    /// Nothing is lit any more but what is at the pointer.
    void setTool(ToolMode tool);
    /// The same before there are views.
    void begin(ToolMode tool);
    /// The views have come onto the screen.
    void show();
    /// They have gone, or go.
    void pause() { m_windowsTimer.stop(); }

    void followPointer();
    /// Lights the next one.
    void cycle(bool backward);
    /// What is lit, as it is now. None when there is nothing or it has gone meanwhile, which the views then
    /// say.
    std::optional<SelectionOutcome> pick(bool record);

    /// The pointer is on the capture bar, and so on no window.
    std::function<bool()> isCursorOverBar;
    /// Windows have opened, gone or moved on that part of the desktop.
    std::function<void(PixelRect)> onWindowsChanged;

private:
    void refreshWindows();
    void showWindows();
    void lightDisplay(const SelectionView *view);
    std::optional<SelectionOutcome> pickWindow(bool record);
    std::optional<SelectionOutcome> pickDisplay(bool record) const;

    CaptureBackend &m_capture;
    const OverlayViews &m_views;
    ToolMode m_tool = ToolMode::area;
    WindowPicker m_picker;
    std::string m_litDisplay;
    QTimer m_windowsTimer;
};

} // namespace vantrell
