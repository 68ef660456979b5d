// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/ToolBarState.h"
#include "Platform/AudioBackend.h"
#include "Platform/CameraBackend.h"
#include "Platform/StillCapture.h"
#include "Support/Clock.h"
#include "Support/Settings.h"

#include <QRect>

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QMenu;
class QWidget;

namespace vantrell {

/// The capture bar: the tools and the options of the next recording, in a panel that remembers its place on
/// each display. Main thread.
class CaptureBar {
public:
    /// All outlive the bar.
    struct Services {
        AudioBackend &audio;
        CameraBackend &cameras;
        /// Tells whether the screen behind the bar is light.
        StillCapture &stills;
        Settings &settings;
        Clock &clock;
    };

    explicit CaptureBar(Services services);
    ~CaptureBar();

    /// Shows it on the display with that id, or the one with the pointer. `menu` gives the application's menu
    /// for the "…" button each time it is opened; the bar owns it.
    void show(std::shared_ptr<ToolBarState> state, const std::optional<std::string> &displayId,
              std::function<std::unique_ptr<QMenu>()> menu);
    void hide();
    bool isVisible() const;
    /// Above the overlay.
    void raise(QWidget &overlay);
    /// Hides it until `comeBack`; false when it was hidden already.
    bool setAside();
    void comeBack();
    /// The keyboard works the bar, until Escape gives it back to the window that had it.
    void takeKeyboard();
    /// The pointer is over the bar or one of its menus.
    bool isCursorOverBar() const;
    /// The panel's own part, in Qt's coordinates; empty while it is hidden.
    QRect frame() const;
    /// The frame is another.
    std::function<void()> onPlaced;
    /// Something of ours that its usual place keeps off, in Qt's coordinates; empty: nothing.
    std::function<QRect()> avoided;

private:
    struct Panel;
    std::unique_ptr<Panel> m_panel;
};

} // namespace vantrell
