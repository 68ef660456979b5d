// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QImage>
#include <QRegion>

#include <optional>

namespace vantrell {

/// How a window shows on the desktop at a moment.
struct WindowAppearance {
    /// Null when it has none.
    QImage icon;
    /// What of its content can be seen, in the desktop's pixels: without what other windows cover, this
    /// application's own panels left out. Absent when it cannot be told.
    std::optional<QRegion> visible;
};

} // namespace vantrell
