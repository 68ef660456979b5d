// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/FileStamp.h"

#include <sys/stat.h>

#include <cerrno>

namespace vantrell {

std::expected<FileStamp, PlatformError> FileStamp::of(const std::filesystem::path &file) {
    struct stat info{};
    if (::stat(file.c_str(), &info) != 0)
        return std::unexpected(PlatformError::fromErrno("read " + file.filename().string(), errno));
    if (!S_ISREG(info.st_mode))
        return std::unexpected(PlatformError::fromErrno("read " + file.filename().string(),
                                                        S_ISDIR(info.st_mode) ? EISDIR : EINVAL));
    return FileStamp{info.st_size, info.st_ino, info.st_mtim.tv_sec * 1'000'000'000LL + info.st_mtim.tv_nsec};
}

} // namespace vantrell
