// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CapturePruning.h"

#include "Capture/CaptureStorage.h"
#include "Recording/RecordingRecovery.h"
#include "Support/AtomicFile.h"
#include "Support/Log.h"
#include "Upload/JournalText.h"
#include "Upload/UploadJournal.h"

#include <cerrno>
#include <expected>
#include <set>
#include <string>

namespace vantrell {

namespace {

/// The error: somebody's uploads may be in it.
std::expected<std::set<std::string>, std::string> pathsOfPendingUploads() {
    const auto text = readFile(CaptureStorage::journalURL());
    if (!text && text.error().code == ENOENT)
        return {};
    if (!text)
        return std::unexpected(text.error().message);
    const auto entries = decodeJournal(*text);
    if (!entries)
        return std::unexpected(entries.error().message);
    return UploadJournal::livePaths(*entries);
}

} // namespace

void pruneCaptures(const std::vector<std::filesystem::path> &wanted,
                   std::chrono::system_clock::time_point now) {
    auto keeping = pathsOfPendingUploads();
    if (!keeping) {
        qCCritical(logCapture, "old captures not removed, uploads unknown: %s", keeping.error().c_str());
        return;
    }
    for (const std::filesystem::path &path : RecordingRecovery::needed(CaptureStorage::directory()))
        keeping->insert(path.string());
    for (const std::filesystem::path &path : wanted)
        keeping->insert(std::filesystem::absolute(path).string());
    CaptureStorage::pruneOldFiles(*keeping, now);
}

} // namespace vantrell
