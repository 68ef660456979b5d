// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vantrell::testing {

/// What one batch uploads, as files in a folder that outlives every kill.
class BatchFolder {
public:
    explicit BatchFolder(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    /// Makes `count` captures of random sizes.
    void fill(int count, unsigned seed) const;

    std::vector<std::filesystem::path> files() const;
    std::shared_ptr<const CaptureResult> capture(const std::filesystem::path &file) const;

    /// Whether a capture has been handed to the upload manager, in this life of the program or an earlier
    /// one.
    bool wasHandedOver(const std::filesystem::path &file) const;
    /// `withSideFiles`: thumbnail and metadata were on the disk, too, before a kill could come between.
    void noteHandedOver(const std::filesystem::path &file, bool withSideFiles) const;
    bool mustHaveSideFiles(const std::filesystem::path &file) const;

private:
    std::filesystem::path m_folder;
};

} // namespace vantrell::testing
