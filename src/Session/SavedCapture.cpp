// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/SavedCapture.h"

#include "Support/AtomicFile.h"
#include "Support/Log.h"

#include <nlohmann/json.hpp>

#include <cerrno>

#include <unistd.h>

namespace vantrell {

namespace {

/// A name in the folder that is not taken: a second capture of the same name gets a number.
std::filesystem::path freeName(const std::filesystem::path &folder, const std::filesystem::path &name) {
    std::filesystem::path path = folder / name;
    for (int n = 2; std::filesystem::exists(path); ++n)
        path = folder / (name.stem().string() + " " + std::to_string(n) + name.extension().string());
    return path;
}

std::error_code moveFile(const std::filesystem::path &from, const std::filesystem::path &to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    if (error != std::errc::cross_device_link)
        return error;
    const std::filesystem::path partial = to.string() + ".part";
    std::filesystem::copy_file(from, partial, error);
    if (!error)
        std::filesystem::rename(partial, to, error);
    std::error_code ignored;
    std::filesystem::remove(error ? partial : from, ignored);
    return error;
}

/// A side file that cannot be written is missing, no more: the capture itself is safe.
std::optional<std::filesystem::path> writeBeside(const std::filesystem::path &file, const char *extension,
                                                 const std::string &bytes) {
    std::filesystem::path path = file;
    path.replace_extension(extension);
    if (const auto written = writeFileAtomically(path, bytes); !written) {
        qCWarning(logCapture, "side file not written: %s", written.error().message.c_str());
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

std::expected<SavedCapture, PlatformError> saveCapture(const CaptureResult &capture,
                                                       const std::optional<std::filesystem::path> &folder) {
    SavedCapture saved{capture.fileURL, {}, {}};
    if (folder) {
        saved.file = std::filesystem::absolute(freeName(*folder, capture.fileURL.filename()));
        if (const std::error_code error = moveFile(capture.fileURL, saved.file))
            return std::unexpected(PlatformError{"posix", error.value(),
                                                 "Cannot write to " + folder->string() + ": " +
                                                     error.message() + ". The capture is kept as " +
                                                     capture.fileURL.string()});
    }
    saved.sidecar = writeBeside(saved.file, ".json", capture.metadata.jsonData());
    if (capture.thumbnailJPEG)
        saved.thumbnail = writeBeside(saved.file, ".jpg", *capture.thumbnailJPEG);
    return saved;
}

nlohmann::json SavedCapture::json(const CaptureResult &capture, bool isPartial) const {
    nlohmann::json object{
        {"file", file.string()},
        {"name", capture.name},
        {"partial", isPartial},
        {"pixelSize",
         {{"width", capture.metadata.pixelSize.width}, {"height", capture.metadata.pixelSize.height}}},
    };
    if (capture.durationMs)
        object["durationMs"] = *capture.durationMs;
    if (sidecar)
        object["sidecar"] = sidecar->string();
    if (thumbnail)
        object["thumbnail"] = thumbnail->string();
    return object;
}

} // namespace vantrell
