// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <string>

namespace vantrell {

/// Port: hands pages and files to the desktop's programs, and to its trash. Main thread; nothing waits for
/// them.
class FileOpener {
public:
    virtual ~FileOpener() = default;

    /// In the user's browser; false when there is no way to.
    virtual bool openPage(const std::string &url) = 0;
    /// With the program that the desktop has for it.
    virtual bool openFile(const std::filesystem::path &file) = 0;
    /// In the file manager, selected.
    virtual bool showInFileManager(const std::filesystem::path &file) = 0;
};

} // namespace vantrell
