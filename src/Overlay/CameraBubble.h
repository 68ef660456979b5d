// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Support/Settings.h"

#include <QImage>

#include <memory>

namespace vantrell {

/// The camera's round picture while recording: draggable, in three sizes, mirrored if the user likes.
/// Remembers place, size and mirror. Main thread.
class CameraBubble {
public:
    /// The settings outlive the bubble.
    explicit CameraBubble(Settings &settings);
    ~CameraBubble();

    void show(const Display &display);
    void hide();
    /// The newest picture; null while the camera has none.
    void setPicture(const QImage &picture);

private:
    struct Panel;
    std::unique_ptr<Panel> m_panel;
};

} // namespace vantrell
