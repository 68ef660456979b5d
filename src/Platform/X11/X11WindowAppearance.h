// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <QImage>
#include <QRegion>

#include <cstdint>
#include <optional>

namespace vantrell {

/// The icon that the application has given the window, in the size next to 48 pixels; null when it has given
/// none. One round trip, on the connection's thread.
QImage x11WindowIcon(const X11Connection &connection, std::uint32_t window);

/// What of the window's content is seen, in the desktop's pixels: in its shape, and without what windows
/// above it cover. Windows with transparency and our own panels cover nothing. None when the window is gone.
/// Some round trips, on the connection's thread.
std::optional<QRegion> x11VisiblePart(std::uint32_t window);

} // namespace vantrell
