// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrell {

/// A plane of brightness from full range (JPEG) to limited range. Reentrant.
void limitLuma(const std::uint8_t *from, std::ptrdiff_t fromStride, std::uint8_t *to, std::ptrdiff_t toStride,
               int width, int height);

/// Two planes of colour differences, full range, to the interleaved limited one of NV12. `width` and `height`
/// count pairs of the result; with `isTall` the planes have twice as many rows, of which two make one.
void limitChroma(const std::uint8_t *cb, const std::uint8_t *cr, std::ptrdiff_t fromStride, bool isTall,
                 std::uint8_t *to, std::ptrdiff_t toStride, int width, int height);

} // namespace vantrell
