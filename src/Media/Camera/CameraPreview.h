// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/ColourMatrix.h"
#include "Media/Picture/Nv12Frame.h"
#include "Support/EventLoop.h"

#include <QImage>

#include <array>
#include <functional>
#include <memory>
#include <mutex>

namespace vantrell {

/// The live picture of a camera, as it passes from the camera's thread to the main thread: cut to a square
/// and scaled in the camera's thread, and only when the one before was taken. A shared object: what is posted
/// to the main thread finds it gone.
class CameraPreview : public std::enable_shared_from_this<CameraPreview> {
public:
    /// Main thread: side of the square in pixels, 0 for none; whom to tell.
    void show(int squarePixels, std::function<void()> changed);
    /// Main thread: the newest picture.
    QImage take();

    /// Camera's thread: side of the square that another picture would be made in; 0 when none is wanted.
    int wantedSide() const;
    /// Camera's thread.
    void offer(const Nv12Frame &frame, ColourMatrix matrix);

private:
    QImage &freeImage(int side);
    void cut(const Nv12Frame &frame, ColourMatrix matrix, QImage &image);
    void tell();

    mutable std::mutex m_mutex;
    int m_side = 0;
    bool m_isTold = false;
    QImage m_newest;
    EventLoop m_loop;
    /// The main thread's.
    std::function<void()> m_changed;
    // The camera's thread's: pictures that are written over once nobody shows them any more.
    std::array<QImage, 3> m_images;
    std::unique_ptr<Nv12Frame> m_small;
};

} // namespace vantrell
