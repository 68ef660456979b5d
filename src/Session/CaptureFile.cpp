// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureFile.h"

#include "Media/Movie/MovieReader.h"
#include "Support/AtomicFile.h"

#include <cmath>

namespace vantrell {

namespace {

bool isFile(const std::filesystem::path &path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// A picture that merely has the same name may be of any size: a thumbnail is small.
std::optional<std::string> readThumbnail(const std::filesystem::path &path) {
    constexpr std::uintmax_t largest = 1 << 20;
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(path, failed);
    if (failed || size == 0 || size > largest)
        return std::nullopt;
    auto bytes = readFile(path);
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

} // namespace

std::expected<CaptureResult, std::string> readCaptureFile(const std::filesystem::path &file) {
    if (!isFile(file))
        return std::unexpected("There is no file " + file.string());
    CaptureResult capture;
    capture.fileURL = std::filesystem::absolute(file);
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
    capture.thumbnailJPEG = readThumbnail(std::filesystem::path(file).replace_extension(".jpg"));
    if (const auto text = readFile(std::filesystem::path(file).replace_extension(".json"))) {
        if (auto metadata = CaptureMetadata::fromJson(*text))
            capture.metadata = std::move(*metadata);
    }
    return capture;
}

} // namespace vantrell
