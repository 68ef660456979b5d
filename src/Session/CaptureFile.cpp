// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureFile.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieReader.h"
#include "Support/AtomicFile.h"
#include "Support/FilePath.h"
#include "Support/Log.h"

#include <cmath>

namespace vantrell {

namespace {

constexpr std::uintmax_t largestThumbnail = 1 << 20;
/// Hours of a pointer that never rests.
constexpr std::uintmax_t largestSidecar = 16 << 20;

bool isFile(const std::filesystem::path &path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// What merely has the same name may be anything of any size: a side file is small.
std::optional<std::string> readSideFile(const std::filesystem::path &file, std::uintmax_t largest) {
    std::error_code failed;
    if (!isFile(file))
        return std::nullopt;
    const std::uintmax_t size = std::filesystem::file_size(file, failed);
    if (failed || size == 0 || size > largest) {
        qCWarning(logUpload, "%s beside the capture is left out: %ju bytes", file.extension().c_str(), size);
        return std::nullopt;
    }
    auto bytes = readFile(file);
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

} // namespace

std::expected<CaptureResult, std::string> readCaptureFile(const std::filesystem::path &file) {
    if (!isFile(file))
        return std::unexpected("There is no file " + file.string());
    CaptureResult capture;
    capture.fileURL = realPath(file);
    capture.name = file.stem().string();
    const std::string extension = file.extension().string();
    if (extension == ".mov") {
        const auto facts = readMovieFacts(file);
        if (!facts)
            return std::unexpected(file.string() + ": " + facts.error().description());
        capture.kind = CaptureResult::Kind::video;
        capture.mime = "video/quicktime";
        capture.durationMs = std::llround(facts->durationMs);
    } else if (extension == ".png") {
        capture.kind = CaptureResult::Kind::image;
        capture.mime = "image/png";
    } else {
        return std::unexpected(file.string() + " is neither a .mov recording nor a .png screenshot");
    }
    capture.thumbnailJPEG = readSideFile(CaptureStorage::thumbnailBeside(file), largestThumbnail);
    if (const auto text = readSideFile(CaptureStorage::sidecarBeside(file), largestSidecar)) {
        if (auto metadata = CaptureMetadata::fromJson(*text))
            capture.metadata = std::move(*metadata);
    }
    return capture;
}

} // namespace vantrell
