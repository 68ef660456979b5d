// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/DiskFile.h"

#include <cstdint>
#include <expected>
#include <stop_token>
#include <variant>

namespace vantrell {

/// Copies `size` bytes from one file into another, inside the kernel where it can, and starts writing them
/// to the disk so that a later synchronisation has little left to wait for. Blocks; the stop is looked at
/// every few megabytes.
std::expected<void, std::variant<PlatformError, Cancelled>>
copyBytes(const DiskFile &from, std::uint64_t fromOffset, const DiskFile &to, std::uint64_t toOffset,
          std::uint64_t size, std::stop_token stop);

} // namespace vantrell
