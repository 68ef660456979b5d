// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <optional>

namespace vantrell {

/// A copy of the program that its user got and put somewhere, instead of the distribution: one image file, or
/// a folder with the marker file at its top.
struct PortableCopy {
    /// The image, or the folder.
    std::filesystem::path root;
    /// What is started, below the root or the same: the folder's launcher, which knows what the system lacks,
    /// where there is one.
    std::filesystem::path program;

    static constexpr const char *marker = ".vantrell-capture-portable";

    bool isImage() const { return root == program; }

    /// The one that runs. None for a package of the distribution and for a build. Looks at the disk.
    static std::optional<PortableCopy> running();
    /// `image` is empty unless the program runs from an image; `executable` is the running file.
    static std::optional<PortableCopy> find(const std::filesystem::path &image,
                                            const std::filesystem::path &executable);
};

} // namespace vantrell
