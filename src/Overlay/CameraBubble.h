// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/CameraBubbleState.h"
#include "Platform/Display.h"
#include "Support/Clock.h"
#include "Support/Settings.h"

#include <QRect>

#include <memory>

namespace vantrell {

/// The camera's round picture while recording: draggable, in three sizes, mirrored if the user likes.
/// Remembers place, size and mirror. Main thread.
class CameraBubble {
public:
    /// Both outlive the bubble.
    CameraBubble(Settings &settings, Clock &clock);
    ~CameraBubble();

    /// `taken`: where it shall not lie, in Qt's coordinates.
    void show(std::shared_ptr<CameraBubbleState> state, const Display &display, const QRect &taken = {});
    void hide();

private:
    struct Panel;
    std::unique_ptr<Panel> m_panel;
};

} // namespace vantrell
