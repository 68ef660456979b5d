// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Published.h"

#include <QImage>

#include <functional>
#include <string>

namespace vantrell {

/// What the bubble shows: the camera's live picture, or why there is none. Main thread.
class CameraBubbleState {
public:
    enum class Camera {
        starting = 1,
        /// Pictures come, or came a moment ago.
        running,
        /// It went away, or could not be switched on.
        missing,
    };

    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

private:
    Observers m_observers;

public:
    Published<Camera> camera{m_observers, Camera::starting};
    /// Why it is missing, a few words.
    Published<std::string> problem{m_observers};

    // Asked by the bubble while the camera runs. Unset ones are skipped.

    /// Wants pictures that fill a square of that many pixels and is told of newer ones; none for 0.
    std::function<void(int squarePixels, std::function<void()> changed)> showPreview;
    std::function<QImage()> preview;
};

} // namespace vantrell
