// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Property.h"
#include "Support/Geometry.h"

#include <optional>

namespace vantrell {

/// Where a window is and which part of it is the application's own. Desktop pixels.
struct X11WindowPlace {
    /// The window without its border.
    PixelRect window;
    int borderWidth = 0;
    int depth = 0;
    xcb_visualid_t visual = 0;
    bool isViewable = false;
    bool isInputOnly = false;
    bool overridesRedirect = false;
    /// The window without the margin in which the application draws its own shadow.
    PixelRect content;

    /// The name of the property that tells of that margin.
    static constexpr const char *shadowProperty = "_GTK_FRAME_EXTENTS";

    /// Asks for a window's place now, to be read later: see X11Property. `shadowAtom` may be zero.
    class Question {
    public:
        Question(const X11Connection &connection, xcb_window_t window, xcb_atom_t shadowAtom);
        ~Question();
        Question(Question &&other) noexcept;
        Question &operator=(Question &&) = delete;

        /// None when the window is gone.
        std::optional<X11WindowPlace> answer();

    private:
        const X11Connection *m_connection;
        xcb_get_geometry_cookie_t m_geometry;
        xcb_get_window_attributes_cookie_t m_attributes;
        xcb_translate_coordinates_cookie_t m_corner;
        X11Property m_shadow;
    };

    static std::optional<X11WindowPlace> of(const X11Connection &connection, xcb_window_t window);
};

} // namespace vantrell
