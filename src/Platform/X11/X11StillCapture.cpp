// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11StillCapture.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Displays.h"
#include "Platform/X11/X11Picture.h"
#include "Platform/X11/X11UnderPanels.h"
#include "Platform/X11/X11WindowStill.h"
#include "Support/BlockingWork.h"
#include "Support/HostTime.h"

#include <QPainter>

#include <algorithm>
#include <functional>
#include <memory>

#include <poll.h>

namespace vantrell {

namespace {

using Picture = std::expected<QImage, PlatformError>;

/// Reads a part of the desktop without this application's own panels.
class PanelFreeReading {
public:
    PanelFreeReading(const X11Connection &connection, const PixelRect &area)
        : m_connection(connection), m_area(area) {
        constexpr std::uint32_t events = X11UnderPanels::rootEvents;
        xcb_change_window_attributes(connection.xcb(), connection.root(), XCB_CW_EVENT_MASK, &events);
        m_underPanels = X11UnderPanels::create(connection);
        if (m_underPanels)
            m_underPanels->setArea(area);
    }

    Picture read() {
        for (int left = mostReads;; --left) {
            if (m_underPanels)
                waitUntilDrawn();
            auto picture =
                readX11Picture(m_connection, m_connection.root(), m_area, m_connection.screen().root_visual);
            if (!picture || !m_underPanels)
                return picture;
            // The picture before took too long to stop everybody for it.
            if (m_underPanels->ask({&m_area, 1}))
                xcb_ungrab_server(m_connection.xcb());
            const bool isWhole = m_underPanels->answer();
            handleEvents();
            if (m_connection.isBroken())
                return std::unexpected(X11Connection::lostError());
            if (left > 1 && (!isWhole || m_underPanels->mayShowPanel()))
                continue;
            if (isWhole)
                m_underPanels->draw(m_area, picture->bits(), picture->bytesPerLine());
            return picture;
        }
    }

private:
    void handleEvents() {
        double when = 0;
        while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.xcb())})
            m_underPanels->handles(*event, hostNow(), when);
    }

    /// Programs whose windows were covered draw what is missing.
    void waitUntilDrawn() {
        const double start = hostNow();
        for (double now = start; now < start + mostPatience && !m_connection.isBroken(); now = hostNow()) {
            m_underPanels->look(now);
            if (m_underPanels->askDamage())
                xcb_ungrab_server(m_connection.xcb());
            m_underPanels->answerDamage({}, [](const PixelRect &) {});
            m_underPanels->update(now, [](const PixelRect &) {});
            xcb_flush(m_connection.xcb());
            handleEvents();
            if (m_underPanels->isOutdated())
                continue;
            if (m_underPanels->held().isEmpty())
                return;
            pollfd waiting{m_connection.fd(), POLLIN, 0};
            ::poll(&waiting, 1, lookInterval);
        }
    }

    /// Seconds.
    static constexpr double mostPatience = 0.7;
    /// Milliseconds.
    static constexpr int lookInterval = 10;
    static constexpr int mostReads = 10;

    const X11Connection &m_connection;
    const PixelRect m_area;
    std::unique_ptr<X11UnderPanels> m_underPanels;
};

Picture captureX11Area(const X11Connection &connection, const PixelRect &wanted) {
    const auto displays = listX11Displays(connection);
    if (!displays)
        return std::unexpected(displays.error());
    const auto area = areaOnDisplays(*displays, wanted);
    if (!area)
        return std::unexpected(area.error());
    const auto root = PanelFreeReading(connection, *area).read();
    if (!root && isScreenError(root.error(), ScreenErrorCode::windowClosed))
        return std::unexpected(
            screenError(ScreenErrorCode::badArea, "The desktop changed its size while it was captured"));
    if (!root)
        return root;
    if (std::ranges::any_of(
            *displays, [&](const Display &display) { return intersection(display.pixels, *area) == *area; }))
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
