// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <QImage>

#include <cstdint>
#include <expected>

namespace vantrell {

/// One picture of a window's own content, whatever covers it: see StillCapture::captureWindow. Blocks for a
/// round trip or two, and up to half a second while the application repaints what was covered. On the
/// connection's thread; the connection must have been opened for this.
std::expected<QImage, PlatformError> captureX11Window(const X11Connection &connection, std::uint32_t window);

} // namespace vantrell
