// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/RecordingHUDState.h"
#include "Platform/Display.h"
#include "Platform/StillCapture.h"
#include "Support/Clock.h"
#include "Support/Settings.h"

#include <QRect>

#include <memory>

namespace vantrell {

/// The small panel of a running recording: stop with the time, meter, pause, restart, delete. Remembers its
/// place on each display. Main thread.
class RecordingHUD {
public:
    /// All outlive the HUD.
    struct Services {
        StillCapture &stills;
        Settings &settings;
        Clock &clock;
    };

    RecordingHUD(Services services, std::shared_ptr<RecordingHUDState> state);
    ~RecordingHUD();

    /// False where there is no place for it that is not in the picture: then it is not shown.
    bool show(const Display &display);
    void hide();
    /// Where it lies, in Qt's coordinates; empty when it is not shown.
    QRect frame() const;

private:
    struct Panel;
    std::unique_ptr<Panel> m_panel;
};

} // namespace vantrell
