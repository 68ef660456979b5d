// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/OverlayScene.h"
#include "Support/Geometry.h"

#include <QImage>
#include <QRegion>

#include <cstdint>
#include <memory>

class QWidget;

namespace vantrell {

/// The pixels of an overlay window, put together by the X server: the screen itself, or the picture of it
/// that the window lies on, never goes through our memory, which at the size of today's screens is what would
/// take the time. Where a compositor blends, the window is filled with the dimming alone.
///
/// Main thread, on Qt's connection. All in pixels of the display.
class OverlayCanvas {
public:
    /// There is an X server to draw; else Qt does.
    static bool hasServer();
    /// Null where there is no X server with RENDER.
    static std::unique_ptr<OverlayCanvas> create(QWidget &window, const PixelRect &display, bool isBlended);
    ~OverlayCanvas();
    OverlayCanvas(const OverlayCanvas &) = delete;
    OverlayCanvas &operator=(const OverlayCanvas &) = delete;

    /// Keeps the screen as it is now, for a window that nothing blends.
    void freezeScreen();
    /// Keeps that picture of a part of it instead.
    void setPicture(const QImage &picture, const QPoint &corner);
    /// A part of what was kept; null when nothing was. One round trip.
    QImage pixels(const QRect &part) const;

    /// Draws that part of the scene; what was there stays until the new is whole.
    void paint(const QRegion &part, const OverlayScene &scene, double scale);

private:
    struct Server;

    OverlayCanvas(std::unique_ptr<Server> server, const PixelRect &display, bool isBlended);
    void paintRect(const QRect &rect, const QRegion &chromeThere, const OverlayScene &scene, double scale);

    std::unique_ptr<Server> m_server;
    const PixelRect m_display;
    const bool m_isBlended;
    std::uint32_t m_pixmap = 0;
};

} // namespace vantrell
