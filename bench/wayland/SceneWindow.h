// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Scene.h"

#include <QImage>
#include <QRasterWindow>
#include <QTimer>

#include <memory>
#include <string>

namespace vantrell::bench {

/// Plays a scene in a window of the Wayland session for as long as it lives, over and over. A process of its
/// own, so that the recorders are measured without it.
class SceneWindow final : public QRasterWindow {
public:
    SceneWindow(const std::string &scene, PixelSize size);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void next();

    const std::unique_ptr<Scene> m_scene;
    QImage m_pixels;
    Picture m_picture;
    QTimer m_timer;
    int m_number = 0;
};

} // namespace vantrell::bench
