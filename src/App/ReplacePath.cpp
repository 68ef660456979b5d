// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ReplacePath.h"

#include "Support/DiskFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>

namespace vantrell {

namespace {

std::unexpected<PlatformError> failure(int number) {
    return std::unexpected(PlatformError::fromErrno("replace the installed copy", number));
}

/// For file systems that cannot exchange names.
std::expected<void, PlatformError> replaceByTwoMoves(const std::filesystem::path &fresh,
                                                     const std::filesystem::path &place) {
    const std::filesystem::path aside = fresh.string() + ".old";
    if (::rename(place.c_str(), aside.c_str()) != 0)
        return failure(errno);
    if (::rename(fresh.c_str(), place.c_str()) != 0) {
        const int problem = errno;
        ::rename(aside.c_str(), place.c_str());
        return failure(problem);
    }
    std::error_code error;
    std::filesystem::remove_all(aside, error);
    return {};
}

} // namespace

std::expected<void, PlatformError> replacePath(const std::filesystem::path &fresh,
                                               const std::filesystem::path &place) {
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(place, error))) {
        if (::rename(fresh.c_str(), place.c_str()) != 0)
            return failure(errno);
    } else if (::renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, place.c_str(), RENAME_EXCHANGE) == 0) {
        // What is in use goes when its last user does.
        std::filesystem::remove_all(fresh, error);
    } else if (errno != EINVAL && errno != ENOSYS) {
        return failure(errno);
    } else if (const auto moved = replaceByTwoMoves(fresh, place); !moved) {
        return moved;
    }
    return syncFolder(place.parent_path());
}

} // namespace vantrell
