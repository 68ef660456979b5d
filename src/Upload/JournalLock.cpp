// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/JournalLock.h"

#include "Support/Log.h"

namespace vantrell {

std::expected<JournalLock, JournalInUse> JournalLock::acquire(const std::filesystem::path &journal) {
    auto lock = FileLock::acquire(journal);
    if (lock)
        return JournalLock(std::move(*lock));
    if (lock.error().isHeldElsewhere)
        return std::unexpected(JournalInUse{});
    qCCritical(logUpload, "upload journal not locked: %s", lock.error().cause.message.c_str());
    return JournalLock(std::nullopt);
}

} // namespace vantrell
