// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/DesktopEntries.h"
#include "Platform/Display.h"
#include "Platform/WindowDescription.h"
#include "Platform/X11/X11Connection.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <vector>

namespace vantrell {

/// The windows of applications, as the window manager tells of them (EWMH), or as they lie on the root where
/// there is no such window manager. On the connection's thread; the connection outlives the catalog.
class X11WindowCatalog {
public:
    explicit X11WindowCatalog(const X11Connection &connection);

    /// The windows on the screen now, the topmost first: neither panels nor the desktop's own, none that is
    /// minimised, and none of this process. `displays` is not empty. A window that vanishes meanwhile is left
    /// out.
    std::expected<std::vector<WindowDescription>, PlatformError>
    windows(const std::vector<Display> &displays);

    /// Where a window is now, in the desktop's pixels: without the window manager's frame and without a
    /// shadow that the application draws itself. One round trip. None when it is gone.
    std::optional<PixelRect> bounds(std::uint32_t window) const;

private:
    struct Atoms {
        explicit Atoms(const X11Connection &connection);

        xcb_atom_t clientListStacking, supportingWmCheck, windowType, typeDock, typeDesktop, state,
            stateHidden, wmState, name, pid, gtkApplicationId, kdeDesktopFile, gtkFrameExtents;
    };
    /// The questions about one window that are under way.
    struct Inquiry;

    /// Bottom to top.
    std::vector<xcb_window_t> candidates() const;
    bool hasLiveWindowManager() const;
    std::vector<xcb_window_t> windowsOnRoot() const;
    std::optional<xcb_window_t> applicationWindow(xcb_window_t onRoot, int depth) const;
    std::optional<WindowDescription> describe(Inquiry &inquiry, const std::vector<Display> &displays);
    bool isForUsers(Inquiry &inquiry) const;

    const X11Connection &m_connection;
    Atoms m_atoms;
    DesktopEntries m_entries;
};

} // namespace vantrell
