// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/DiskFile.h"

#include <cstdint>
#include <expected>
#include <filesystem>

namespace vantrell {

/// Room on a disk that is set aside now and given back when it is needed. It is held by a file without a
/// name, so that nothing stays behind after a crash. Where the file system cannot set room aside, it holds
/// none and says nothing. Thread-bound.
class DiskReserve {
public:
    explicit DiskReserve(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    /// Grows to at least `bytes`. The only error is a full disk; what was held before stays held.
    std::expected<void, PlatformError> hold(std::uint64_t bytes);

    void release();

private:
    const std::filesystem::path m_folder;
    DiskFile m_file;
    std::uint64_t m_held = 0;
    bool m_isSupported = true;
};

} // namespace vantrell
