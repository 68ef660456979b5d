// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraSource.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrell {

/// Sets the planes of a frame, whose size and format are known, to the bytes of one buffer, in which they lie
/// one behind the other. `stride` is that of the first plane, 0 where the driver does not tell it. False when
/// the buffer is too short to hold the picture.
bool splitCameraPicture(std::span<const std::uint8_t> bytes, std::ptrdiff_t stride, CameraFrame &frame);

} // namespace vantrell
