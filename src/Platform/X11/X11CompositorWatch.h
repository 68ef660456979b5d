// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <cstdint>
#include <optional>

namespace vantrell {

/// Whether a compositing manager draws the desktop, by the selection that each of them owns. On the
/// connection's thread.
class X11CompositorWatch {
public:
    /// One round trip or two. The connection outlives it.
    explicit X11CompositorWatch(const X11Connection &connection);

    /// True when the event says that one came or went.
    bool handles(const xcb_generic_event_t &event);

    bool isRunning() const { return m_isRunning; }

private:
    xcb_atom_t m_selection;
    std::optional<std::uint8_t> m_event;
    bool m_isRunning = false;
};

} // namespace vantrell
