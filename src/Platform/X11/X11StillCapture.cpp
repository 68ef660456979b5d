// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11StillCapture.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Displays.h"
#include "Platform/X11/X11Picture.h"
#include "Platform/X11/X11WindowStill.h"
#include "Support/BlockingWork.h"

#include <QPainter>

#include <functional>

namespace vantrell {

namespace {

using Picture = std::expected<QImage, PlatformError>;

Picture captureX11Area(const X11Connection &connection, const PixelRect &wanted) {
    const auto displays = listX11Displays(connection);
    if (!displays)
        return std::unexpected(displays.error());
    const auto area = areaOnDisplays(*displays, wanted);
    if (!area)
        return std::unexpected(area.error());
    const auto root = readX11Picture(connection, connection.root(), *area, connection.screen().root_visual);
    if (!root && isScreenError(root.error(), ScreenErrorCode::windowClosed))
        return std::unexpected(
            screenError(ScreenErrorCode::badArea, "The desktop changed its size while it was captured"));
    if (!root)
        return root;
    // Between monitors of different sizes lie pixels that nobody sees; what is in them is anyone's guess.
    QImage picture(area->width, area->height, root->format());
    picture.fill(Qt::black);
    QPainter painter(&picture);
    for (const Display &display : *displays) {
        const PixelRect seen = intersection(display.pixels, *area);
        painter.drawImage(QPoint(seen.x - area->x, seen.y - area->y), *root,
                          QRect(seen.x - area->x, seen.y - area->y, seen.width, seen.height));
    }
    return picture;
}

Task<StillCapture::Result> onWorker(std::function<Picture(const X11Connection &)> capture,
                                    std::stop_token stop) {
    return runBlocking(
        [capture = std::move(capture)]() -> Picture {
            const auto connection = X11Connection::open();
            if (!connection)
                return std::unexpected(connection.error());
            return capture(**connection);
        },
        std::move(stop));
}

} // namespace

Task<StillCapture::Result> X11StillCapture::captureWindow(std::uint32_t window, std::stop_token stop) {
    return onWorker(
        [window](const X11Connection &connection) { return captureX11Window(connection, window); },
        std::move(stop));
}

Task<StillCapture::Result> X11StillCapture::captureArea(PixelRect area, std::stop_token stop) {
    return onWorker([area](const X11Connection &connection) { return captureX11Area(connection, area); },
                    std::move(stop));
}

} // namespace vantrell
