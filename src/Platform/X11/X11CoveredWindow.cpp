// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11CoveredWindow.h"

#include <xcb/composite.h>

#include <utility>

namespace vantrell {

X11CoveredWindow::X11CoveredWindow(const X11Connection &connection, xcb_window_t window, X11Damage damage)
    : m_connection(&connection), m_window(window), m_damage(damage) {}

std::optional<X11CoveredWindow> X11CoveredWindow::keepWhole(const X11Connection &connection,
                                                            xcb_window_t window) {
    xcb_connection_t *xcb = connection.xcb();
    // Refused unless it is whole already.
    const xcb_pixmap_t former = xcb_generate_id(xcb);
    xcb_composite_name_window_pixmap(xcb, window, former);
    const auto formerSize = xcb_get_geometry(xcb, former);
    xcb_composite_redirect_window(xcb, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    // The server has painted the background of what was covered by now: the damage is the program's.
    auto damage = X11Damage::create(connection, window);
    if (!damage) {
        xcb_discard_reply(xcb, formerSize.sequence);
        return std::nullopt;
    }
    damage->forget();
    X11CoveredWindow covered(connection, window, *damage);
    covered.m_former = former;
    covered.m_formerSize = formerSize;
    covered.ask();
    return covered;
}

void X11CoveredWindow::release(bool isThere) {
    xcb_connection_t *xcb = m_connection->xcb();
    if (m_pixmap != XCB_NONE)
        xcb_free_pixmap(xcb, std::exchange(m_pixmap, XCB_NONE));
    m_damage.end(isThere);
    if (!isThere)
        return;
    xcb_composite_unredirect_window(xcb, m_window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void X11CoveredWindow::outdate(bool wasMapped) {
    m_isOutdated = true;
    m_isNew |= wasMapped;
}

void X11CoveredWindow::ask() {
    if (!std::exchange(m_isOutdated, false))
        return;
    m_asked = xcb_generate_id(m_connection->xcb());
    xcb_composite_name_window_pixmap(m_connection->xcb(), m_window, m_asked);
    m_askedSize = xcb_get_geometry(m_connection->xcb(), m_asked);
}

bool X11CoveredWindow::answer() {
    xcb_connection_t *xcb = m_connection->xcb();
    if (const auto former = std::exchange(m_formerSize, std::nullopt);
        former && xcbReply(xcb, *former, xcb_get_geometry_reply)) {
        xcb_free_pixmap(xcb, m_former);
        m_isNew = false;
    }
    const xcb_pixmap_t asked = std::exchange(m_asked, XCB_NONE);
    if (asked == XCB_NONE)
        return false;
    const auto reply = xcbReply(xcb, m_askedSize, xcb_get_geometry_reply);
    const PixelSize size = reply ? PixelSize{reply->width, reply->height} : PixelSize();
    if (m_pixmap != XCB_NONE) {
        xcb_free_pixmap(xcb, m_pixmap);
        m_isNew |= size != m_size;
    }
    m_pixmap = reply ? asked : XCB_NONE;
    m_size = size;
    return std::exchange(m_isNew, false);
}

bool X11CoveredWindow::handles(const xcb_generic_event_t &event, double now, double &hostTime) {
    return m_damage.handles(event, now, hostTime);
}

void X11CoveredWindow::askDamage(bool anyway) {
    if (anyway)
        m_damage.expectDamage();
    m_damage.ask();
}

QRegion X11CoveredWindow::answerDamage() {
    QRegion drawn;
    m_damage.answer([&](const PixelRect &rect) {
        drawn += QRect(rect.x + m_border, rect.y + m_border, rect.width, rect.height);
    });
    m_missing -= drawn;
    return drawn.translated(m_place.x, m_place.y);
}

void X11CoveredWindow::setPlace(const PixelRect &place, int border, const QRegion &shown) {
    m_place = place;
    m_border = border;
    m_shown = shown;
}

void X11CoveredWindow::miss(const QRegion &part, double now, double patience) {
    m_missing += part;
    m_patientUntil = now + patience;
}

void X11CoveredWindow::look(double now) {
    if (now >= m_patientUntil)
        m_missing = QRegion();
}

std::optional<double> X11CoveredWindow::looksAt() const {
    return m_missing.isEmpty() ? std::nullopt : std::optional(m_patientUntil);
}

std::optional<X11PatchReader::Cut> X11CoveredWindow::cut() const {
    if (m_pixmap == XCB_NONE)
        return std::nullopt;
    return X11PatchReader::Cut{
        .drawable = m_pixmap, .drawableSize = m_size, .x = -m_place.x, .y = -m_place.y};
}

} // namespace vantrell
