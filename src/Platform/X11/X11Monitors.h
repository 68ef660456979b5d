// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <xcb/randr.h>

#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// One monitor of the X screen. A value type.
struct X11Monitor {
    /// "DP-1".
    std::string id;
    PixelRect pixels;
    bool isPrimary = false;
    /// Mirrored monitors have several outputs, those made by hand may have none.
    std::vector<xcb_randr_output_t> outputs;
};

/// The monitors as RANDR has them, in its order; none when it knows none. Some round trips, on the
/// connection's thread.
std::vector<X11Monitor> listX11Monitors(const X11Connection &connection);

/// What the maker has named the monitor ("U2720Q"), which it tells in its EDID; none when it does not. One
/// round trip for each output.
std::optional<std::string> x11MonitorName(const X11Connection &connection, const X11Monitor &monitor);

} // namespace vantrell
