// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Damage.h"
#include "Platform/X11/X11PatchReader.h"
#include "Support/Geometry.h"

#include <QRegion>

#include <optional>

namespace vantrell {

/// A window on the root whose content is kept whole (COMPOSITE) and watched (DAMAGE), so that it can be read
/// where something covers it. On the connection's thread, which outlives it.
///
/// Without a compositor the covered parts of a window exist nowhere. When it begins to be kept whole the
/// server asks its program for them, and until that has drawn them they are `missing`: what is in their place
/// is anyone's, even the pixels of what covers them. The same holds when it is mapped or resized.
class X11CoveredWindow {
public:
    /// None without DAMAGE. Sends the questions; `answer` comes next.
    static std::optional<X11CoveredWindow> keepWhole(const X11Connection &connection, xcb_window_t window);
    /// Nothing is kept any more. `isThere`: the window has not been closed.
    void release(bool isThere);

    xcb_window_t window() const { return m_window; }

    /// It was mapped or resized, or a compositor came or went: its pixels may be elsewhere.
    void outdate(bool wasMapped = false);
    /// Sends the question where its pixels are; nothing when that is known.
    void ask();
    /// True when its pixels are new: what is covered of it is missing.
    bool answer();

    /// True when the event says that something was drawn; it then happened at `hostTime`.
    bool handles(const xcb_generic_event_t &event, double now, double &hostTime);
    /// `anyway`: also when no event has come yet.
    void askDamage(bool anyway);
    /// What was drawn, in pixels of the desktop. It is missing no longer.
    QRegion answerDamage();

    /// Where it lies with its border, and the part of the desktop where it is seen.
    void setPlace(const PixelRect &place, int border, const QRegion &shown);
    const QRegion &shown() const { return m_shown; }

    /// Adds a part that is missing until it is drawn, or until `patience` (seconds) has passed: then its
    /// program either need not draw it or does not answer. In pixels of the window, its border included.
    void miss(const QRegion &part, double now, double patience);
    void look(double now);
    const QRegion &missing() const { return m_missing; }
    /// When `look` is due; none when nothing is missing.
    std::optional<double> looksAt() const;

    /// Where to read it; none: it has no pixels now.
    std::optional<X11PatchReader::Cut> cut() const;

private:
    X11CoveredWindow(const X11Connection &connection, xcb_window_t window, X11Damage damage);

    const X11Connection *m_connection;
    xcb_window_t m_window;
    X11Damage m_damage;
    /// Only of a window that a compositor, say, keeps whole already.
    xcb_pixmap_t m_former = XCB_NONE;
    std::optional<xcb_get_geometry_cookie_t> m_formerSize;
    xcb_pixmap_t m_asked = XCB_NONE;
    xcb_get_geometry_cookie_t m_askedSize{};
    bool m_isOutdated = true;
    bool m_isNew = true;
    xcb_pixmap_t m_pixmap = XCB_NONE;
    PixelSize m_size;
    PixelRect m_place;
    int m_border = 0;
    QRegion m_shown;
    QRegion m_missing;
    double m_patientUntil = 0;
};

} // namespace vantrell
