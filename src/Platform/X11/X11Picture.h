// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"
#include "Support/Geometry.h"

#include <QImage>

#include <expected>

namespace vantrell {

/// Reads pixels of a window or pixmap. `part` lies within the drawable; `visual` says what its pixels mean.
/// Premultiplied alpha when the drawable has any, opaque otherwise. Errors: `unsupportedPixels`,
/// `outOfMemory`, `connectionLost`, and `windowClosed` when the drawable is gone. On the connection's thread.
std::expected<QImage, PlatformError> readX11Picture(const X11Connection &connection, xcb_drawable_t drawable,
                                                    const PixelRect &part, xcb_visualid_t visual);

} // namespace vantrell
