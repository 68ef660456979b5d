// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/DiskSpace.h"

#include "Support/Log.h"

#include <sys/statvfs.h>

namespace vantrell {

bool isEnoughToRecord(std::uint64_t freeBytes) {
    return freeBytes > 1'999'999'999;
}

std::expected<void, RecordingError> checkFreeDiskSpace(const std::filesystem::path &folder) {
    struct statvfs disk{};
    if (::statvfs(folder.c_str(), &disk) != 0)
        return {};
    if (isEnoughToRecord(std::uint64_t(disk.f_bavail) * disk.f_frsize))
        return {};
    qCCritical(logCapture, "record start refused: low disk space");
    return std::unexpected(RecordingError::lowDiskSpace);
}

} // namespace vantrell
