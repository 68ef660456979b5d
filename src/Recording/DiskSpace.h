// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Recording/RecordingError.h"

#include <cstdint>
#include <expected>
#include <filesystem>

namespace vantrell {

/// Refuses to start a recording with less than 2,000,000,000 bytes free on the folder's disk. Passes when the
/// free space cannot be told.
std::expected<void, RecordingError> checkFreeDiskSpace(const std::filesystem::path &folder);

/// The rule by itself.
bool isEnoughToRecord(std::uint64_t freeBytes);

} // namespace vantrell
