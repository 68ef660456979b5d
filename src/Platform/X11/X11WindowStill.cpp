// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowStill.h"

#include "Platform/ScreenError.h"
#include "Platform/X11/X11Picture.h"
#include "Platform/X11/X11WindowPlace.h"
#include "Support/HostTime.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <QRegion>

#include <algorithm>
#include <cmath>

#include <poll.h>

namespace vantrell {

namespace {

/// An application that has not drawn for so long has repainted what was asked of it ...
constexpr double quietSeconds = 0.06;
/// ... and one that draws all the time, or does not answer, is taken as it is.
constexpr double mostPatience = 0.5;

std::unexpected<PlatformError> closed() {
    return std::unexpected(
        screenError(ScreenErrorCode::windowClosed, "The window was closed before it was captured"));
}

/// Watches what an application draws into a window. Without a compositing manager the covered parts of a
/// window exist nowhere; once it is redirected the server asks the application for them.
class Repainting {
public:
    Repainting(const X11Connection &connection, xcb_window_t window, std::uint8_t firstDamageEvent)
        : m_connection(connection), m_firstDamageEvent(firstDamageEvent),
          m_damage(xcb_generate_id(connection.xcb())) {
        selectExposures(window);
        xcb_damage_create(connection.xcb(), m_damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }

    /// After a round trip behind the redirection: returns when what was exposed has been drawn.
    void waitUntilDone() {
        drain();
        if (!m_exposed)
            return;
        const double start = hostNow();
        m_lastDrawn = start;
        for (double now = start; now < std::min(m_lastDrawn + quietSeconds, start + mostPatience);
             now = hostNow()) {
            pollfd waiting{m_connection.fd(), POLLIN, 0};
            ::poll(&waiting, 1, int(std::ceil(quietSeconds * 1000)));
            drain();
            if (m_connection.isBroken())
                return;
        }
    }

private:
    void selectExposures(xcb_window_t window) const {
        constexpr std::uint32_t exposures = XCB_EVENT_MASK_EXPOSURE;
        xcb_connection_t *xcb = m_connection.xcb();
        xcb_change_window_attributes(xcb, window, XCB_CW_EVENT_MASK, &exposures);
        const auto tree = xcbReply(xcb, xcb_query_tree(xcb, window), xcb_query_tree_reply);
        for (int i = 0; tree && i < xcb_query_tree_children_length(tree.get()); ++i)
            selectExposures(xcb_query_tree_children(tree.get())[i]);
    }

    void drain() {
        while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.xcb())}) {
            const std::uint8_t type = event->response_type & ~X11Connection::sentEventBit;
            if (type == XCB_EXPOSE) {
                m_exposed = true;
            } else if (type == m_firstDamageEvent + XCB_DAMAGE_NOTIFY) {
                m_lastDrawn = hostNow();
                // Else the next drawing makes no event.
                xcb_damage_subtract(m_connection.xcb(), m_damage, XCB_NONE, XCB_NONE);
                xcb_flush(m_connection.xcb());
            }
        }
    }

    const X11Connection &m_connection;
    std::uint8_t m_firstDamageEvent;
    xcb_damage_damage_t m_damage;
    bool m_exposed = false;
    double m_lastDrawn = 0;
};

/// The window's shape in its own coordinates; none when the server cannot tell.
std::optional<QRegion> shapeOf(const X11Connection &connection, xcb_window_t window) {
    xcb_connection_t *xcb = connection.xcb();
    if (!connection.requireXFixes())
        return std::nullopt;
    const xcb_xfixes_region_t region = xcb_generate_id(xcb);
    xcb_xfixes_create_region_from_window(xcb, region, window, XCB_SHAPE_SK_BOUNDING);
    const auto reply = xcbReply(xcb, xcb_xfixes_fetch_region(xcb, region), xcb_xfixes_fetch_region_reply);
    if (!reply)
        return std::nullopt;
    const xcb_rectangle_t *rectangles = xcb_xfixes_fetch_region_rectangles(reply.get());
    QRegion shape;
    for (int i = 0; i < xcb_xfixes_fetch_region_rectangles_length(reply.get()); ++i)
        shape += QRect(rectangles[i].x, rectangles[i].y, rectangles[i].width, rectangles[i].height);
    return shape;
}

/// Makes what lies outside of the shape transparent. `visible` is the image's place in the window.
QImage cutToShape(QImage image, const QRect &visible, const std::optional<QRegion> &shape) {
    if (!shape || shape->intersected(visible) == QRegion(visible))
        return image;
    QImage cut = std::move(image).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (const QRect &outside : QRegion(visible).subtracted(*shape)) {
        const QRect gap = outside.translated(-visible.topLeft());
        for (int y = gap.top(); y <= gap.bottom(); ++y)
            std::fill_n(reinterpret_cast<QRgb *>(cut.scanLine(y)) + gap.left(), gap.width(), QRgb(0));
    }
    return cut;
}

} // namespace

std::expected<QImage, PlatformError> captureX11Window(const X11Connection &connection, std::uint32_t window) {
    xcb_connection_t *xcb = connection.xcb();
    const auto composite = connection.require(&xcb_composite_id, "Composite");
    if (!composite)
        return std::unexpected(composite.error());
    const auto damage = connection.require(&xcb_damage_id, "DAMAGE");
    if (!damage)
        return std::unexpected(damage.error());
    xcb_discard_reply(xcb, xcb_composite_query_version(xcb, 0, 4).sequence);
    xcb_discard_reply(xcb, xcb_damage_query_version(xcb, 1, 1).sequence);

    const auto before = X11WindowPlace::of(connection, window);
    if (!before)
        return std::unexpected(
            screenError(ScreenErrorCode::noSuchWindow, "There is no window " + std::to_string(window)));
    if (!before->isViewable || before->isInputOnly)
        return std::unexpected(screenError(ScreenErrorCode::noSuchWindow,
                                           "The window " + std::to_string(window) + " is not shown"));

    Repainting repainting(connection, window, (*damage)->first_event);
    xcb_composite_redirect_window(xcb, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    // Also a round trip: exposures have come when it returns.
    const auto shape = shapeOf(connection, window);
    const auto asked = X11WindowPlace::of(connection, window);
    repainting.waitUntilDone();

    const xcb_pixmap_t pixmap = xcb_generate_id(xcb);
    const XcbPointer<xcb_generic_error_t> refused(
        xcb_request_check(xcb, xcb_composite_name_window_pixmap_checked(xcb, window, pixmap)));
    // The size that belongs to the pixels is the pixmap's: the window may be resized at any time.
    const auto place = X11WindowPlace::of(connection, window);
    if (connection.isBroken())
        return std::unexpected(X11Connection::lostError());
    if (refused || !place || !asked)
        return closed();
    const auto size = xcbReply(xcb, xcb_get_geometry(xcb, pixmap), xcb_get_geometry_reply);
    if (!size)
        return closed();
    const int border = place->borderWidth;
    const PixelRect inner{border, border, size->width - 2 * border, size->height - 2 * border};
    const PixelRect part = intersection(inner, {border + place->content.x - place->window.x,
                                                border + place->content.y - place->window.y,
                                                place->content.width, place->content.height});
    if (part.isEmpty())
        return closed();
    auto image = readX11Picture(connection, pixmap, part, place->visual);
    if (!image)
        return image;
    const QRect visible(part.x - border, part.y - border, part.width, part.height);
    return cutToShape(std::move(*image), visible, shape);
}

} // namespace vantrell
