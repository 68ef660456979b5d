// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/VideoEncoder.h"

#include <expected>

namespace vantrell {

/// Has a fresh encoder encode a few pictures of text and movement, decodes them and compares: drivers exist
/// that take everything and return grey, late or nothing. After a success the encoder goes on with the real
/// pictures, the first of which is a key frame. Blocks for some 100 ms; any thread.
std::expected<void, PlatformError> tryEncoder(VideoEncoder &encoder, PixelSize picture);

} // namespace vantrell
