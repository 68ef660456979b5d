// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <span>

namespace vantrell {

/// The Castagnoli checksum, by the processor's own instruction where it has one. `previous` continues a sum.
std::uint32_t crc32c(std::span<const std::uint8_t> bytes, std::uint32_t previous = 0);

} // namespace vantrell
