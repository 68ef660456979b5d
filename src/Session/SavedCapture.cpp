// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/SavedCapture.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/FileCopy.h"
#include "Support/AtomicFile.h"
#include "Support/DiskFile.h"
#include "Support/FilePath.h"
#include "Support/Log.h"
#include "Support/ScopeExit.h"

#include <nlohmann/json.hpp>

#include <cerrno>

#include <unistd.h>

namespace vantrell {

namespace {

/// A name in the folder that is not taken: a second capture of the same name gets a number.
std::filesystem::path freeName(const std::filesystem::path &folder, const std::filesystem::path &name) {
    std::filesystem::path path = folder / name;
    std::error_code unknown;
    for (int n = 2; std::filesystem::exists(path, unknown); ++n)
        path = folder / (name.stem().string() + " " + std::to_string(n) + name.extension().string());
    return path;
}

/// Onto another file system: there under a name of its own until it is whole and on the disk.
std::expected<void, PlatformError> copyFile(const std::filesystem::path &from,
                                            const std::filesystem::path &to) {
    const std::filesystem::path partial = to.native() + ".part";
    const auto source = DiskFile::openForReading(from);
    if (!source)
        return std::unexpected(source.error());
    const auto size = source->size();
    if (!size)
        return std::unexpected(size.error());
    // Of a copy that was killed.
    ::unlink(partial.c_str());
    auto target = DiskFile::create(partial);
    if (!target)
        return std::unexpected(target.error());
    const ScopeExit removePartial([&partial] { ::unlink(partial.c_str()); });
    if (const auto copied = copyBytes(*source, 0, *target, 0, *size, {}); !copied)
        return std::unexpected(std::get<PlatformError>(copied.error()));
    if (const auto synced = target->sync(); !synced)
        return synced;
    target->close();
    if (::rename(partial.c_str(), to.c_str()) != 0)
        return std::unexpected(PlatformError::fromErrno("rename", errno));
    const auto synced = syncFolder(to.parent_path());
    if (!synced)
        ::unlink(to.c_str());
    return synced;
}

std::expected<void, PlatformError> moveFile(const std::filesystem::path &from,
                                            const std::filesystem::path &to) {
    if (::rename(from.c_str(), to.c_str()) == 0) {
        if (const auto synced = syncFolder(to.parent_path()); !synced)
            qCWarning(logCapture, "capture's folder not synced: %s", synced.error().message.c_str());
        return {};
    }
    if (errno != EXDEV)
        return std::unexpected(PlatformError::fromErrno("rename", errno));
    if (const auto copied = copyFile(from, to); !copied)
        return copied;
    ::unlink(from.c_str());
    return {};
}

/// A side file that cannot be written is missing, no more: the capture itself is safe.
std::optional<std::filesystem::path> writeSideFile(std::filesystem::path path, const std::string &bytes) {
    if (const auto written = writeFileAtomically(path, bytes); !written) {
        qCCritical(logCapture, "side file not written: %s", written.error().message.c_str());
        return std::nullopt;
    }
    return path;
}

} // namespace

std::expected<void, PlatformError> prepareFolder(const std::filesystem::path &folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const std::string sentence = "Cannot write to " + folder.string();
    if (error)
        return std::unexpected(PlatformError{"posix", error.value(), sentence + ": " + error.message()});
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return std::unexpected(PlatformError::fromErrno(sentence, errno));
    if (!std::filesystem::is_directory(folder))
        return std::unexpected(PlatformError::fromErrno(sentence, ENOTDIR));
    return {};
}

std::expected<SavedCapture, PlatformError>
saveCapture(const CaptureResult &capture, const std::optional<std::filesystem::path> &folder,
            const std::function<void(const std::filesystem::path &)> &beforeMove, const std::string &name) {
    SavedCapture saved{capture.fileURL, {}, {}};
    if (folder) {
        saved.file = freeName(realPath(*folder),
                              name.empty() ? capture.fileURL.filename() : std::filesystem::path(name));
        if (beforeMove)
            beforeMove(saved.file);
        if (const auto moved = moveFile(capture.fileURL, saved.file); !moved)
            return std::unexpected(PlatformError{moved.error().domain, moved.error().code,
                                                 "Cannot write to " + folder->string() + ": " +
                                                     moved.error().message + ". The capture is kept as " +
                                                     capture.fileURL.string()});
    }
    saved.sidecar = writeSideFile(CaptureStorage::sidecarBeside(saved.file), capture.metadata.jsonData());
    if (capture.thumbnailJPEG)
        saved.thumbnail = writeSideFile(CaptureStorage::thumbnailBeside(saved.file), *capture.thumbnailJPEG);
    return saved;
}

nlohmann::json SavedCapture::json(const CaptureResult &capture, bool isPartial) const {
    nlohmann::json object{
        {"file", textOfPath(file)},
        {"name", capture.name},
        {"partial", isPartial},
        {"pixelSize",
         {{"width", capture.metadata.pixelSize.width}, {"height", capture.metadata.pixelSize.height}}},
    };
    if (capture.durationMs)
        object["durationMs"] = *capture.durationMs;
    if (sidecar)
        object["sidecar"] = textOfPath(*sidecar);
    if (thumbnail)
        object["thumbnail"] = textOfPath(*thumbnail);
    return object;
}

} // namespace vantrell
