// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureStorage.h"

#include "Support/FilePath.h"

#include <QDateTime>
#include <QStandardPaths>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace vantrell {

namespace {

constexpr std::chrono::seconds captureLifetime(604800);

std::filesystem::path applicationFolder() {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty())
        qFatal("no folder for application data");
    std::filesystem::path folder = std::filesystem::path(data.toStdString()) / "VantrellCapture";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return folder;
}

std::string canonicalText(const QUuid &id) {
    return id.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

std::chrono::system_clock::time_point timePoint(const struct statx_timestamp &time) {
    return std::chrono::system_clock::time_point(std::chrono::seconds(time.tv_sec) +
                                                 std::chrono::microseconds(time.tv_nsec / 1000));
}

/// A recording that was recovered late is new in spite of its creation date.
std::optional<std::chrono::system_clock::time_point> lastChange(const std::filesystem::path &path) {
    struct statx info{};
    constexpr unsigned times = STATX_BTIME | STATX_MTIME;
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, times, &info) != 0 ||
        (info.stx_mask & times) != times)
        return std::nullopt;
    return std::max(timePoint(info.stx_btime), timePoint(info.stx_mtime));
}

} // namespace

std::filesystem::path CaptureStorage::directory() {
    std::filesystem::path folder = applicationFolder() / "Captures";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return folder;
}

std::filesystem::path CaptureStorage::newFileURL(const std::string &ext) {
    const std::string time = QDateTime::currentDateTime().toString("yyyy-MM-dd HH.mm.ss").toStdString();
    const std::string unique = canonicalText(QUuid::createUuid()).substr(0, 4);
    return directory() / ("Vantrell Capture " + time + " " + unique + "." + ext);
}

std::filesystem::path CaptureStorage::sidecarURL(const QUuid &captureId, const std::string &suffix) {
    return directory() / (canonicalText(captureId) + "." + suffix);
}

std::filesystem::path CaptureStorage::thumbnailOf(const QUuid &captureId) {
    return sidecarURL(captureId, "thumb.jpg");
}

std::filesystem::path CaptureStorage::sidecarOf(const QUuid &captureId) {
    return sidecarURL(captureId, "sidecar.json");
}

std::filesystem::path CaptureStorage::thumbnailBeside(const std::filesystem::path &capture) {
    return std::filesystem::path(capture).replace_extension(".jpg");
}

std::filesystem::path CaptureStorage::sidecarBeside(const std::filesystem::path &capture) {
    return std::filesystem::path(capture).replace_extension(".json");
}

std::filesystem::path CaptureStorage::crashFolder() {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return std::filesystem::path(data.toStdString()) / "VantrellCapture" / "Crashes";
}

std::filesystem::path CaptureStorage::journalURL() {
    return applicationFolder() / "upload-journal.json";
}

std::filesystem::path CaptureStorage::analyticsQueueURL() {
    return applicationFolder() / "analytics-queue.json";
}

void CaptureStorage::pruneOldFiles(const std::set<std::string> &keeping,
                                   std::chrono::system_clock::time_point now) {
    std::error_code failed;
    std::vector<std::filesystem::path> entries;
    std::filesystem::directory_iterator iterator(directory(), failed);
    if (failed)
        return;
    for (; iterator != std::filesystem::directory_iterator(); iterator.increment(failed)) {
        entries.push_back(iterator->path());
        if (failed)
            break;
    }
    std::set<std::filesystem::path> kept;
    for (const std::string &path : keeping)
        kept.insert(realPath(path));
    for (const std::filesystem::path &entry : entries) {
        if (keeping.contains(entry.string()) || kept.contains(realPath(entry)))
            continue;
        const auto changed = lastChange(entry);
        if (changed && *changed < now - captureLifetime)
            std::filesystem::remove_all(entry, failed);
    }
}

} // namespace vantrell
