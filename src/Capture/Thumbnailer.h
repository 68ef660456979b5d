// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string>

class QImage;

namespace vantrell {

/// Makes the small JPEG that accompanies every capture. Stateless; thread-safe.
class Thumbnailer {
public:
    /// The image with its longer side at most 512 pixels (never enlarged), as JPEG; nothing when that fails.
    static std::optional<std::string> jpegThumbnail(const QImage &image);
};

} // namespace vantrell
