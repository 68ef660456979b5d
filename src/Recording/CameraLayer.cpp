// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/CameraLayer.h"

#include "Capture/ScreenshotEngine.h"
#include "Capture/Thumbnailer.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/PosterFrame.h"
#include "Recording/CameraAlignment.h"
#include "Recording/MovieStitcher.h"
#include "Recording/RecordingJournal.h"
#include "Recording/RecordingRecord.h"
#include "Recording/SegmentMovie.h"
#include "Support/Log.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

namespace fs = std::filesystem;

std::expected<std::vector<RecordedSegment>, Failure> lastingFiles(std::vector<RecordedSegment> files) {
    std::vector<RecordedSegment> lasting;
    for (RecordedSegment &file : files) {
        const auto durationMs = durationOfMovie(file.fileURL);
        if (!durationMs)
            return std::unexpected(Failure(durationMs.error()));
        file.durationMs = *durationMs;
        if (file.durationMs > 0)
            lasting.push_back(std::move(file));
    }
    return lasting;
}

CaptureMetadata cameraMetadata(const MovieFacts &facts, double anchorHostTime, const CameraLayer &layer) {
    CaptureMetadata metadata;
    metadata.type = "recording";
    metadata.capturedAt = iso8601(layer.startedAt);
    metadata.source = CaptureKind::camera;
    RecordingInfo info;
    info.durationMs = facts.durationMs;
    info.anchorHostTime = anchorHostTime;
    info.recordingId = layer.recordingId;
    const auto video = std::ranges::find(facts.tracks, true, &MovieFacts::Track::isVideo);
    if (video != facts.tracks.end()) {
        metadata.pixelSize = video->size;
        if (video->durationMs > 0)
            info.fps = std::round(double(video->sampleCount) * 10'000 / video->durationMs) / 10;
    }
    metadata.display.size = {double(metadata.pixelSize.width), double(metadata.pixelSize.height)};
    metadata.recording = std::move(info);
    return metadata;
}

} // namespace

std::expected<std::optional<CaptureResult>, Failure>
describeCameraMovie(const fs::path &movie, double anchorHostTime, const CameraLayer &layer) {
    const auto facts = readMovieFacts(movie);
    if (!facts || !std::isfinite(facts->durationMs) || facts->durationMs <= 0) {
        if (!facts)
            qCCritical(logCapture, "camera movie not readable: %s", facts.error().message.c_str());
        std::error_code ignored;
        fs::remove(movie, ignored);
        return std::nullopt;
    }
    CaptureResult capture;
    capture.mime = "video/quicktime";
    capture.fileURL = movie;
    capture.metadata = cameraMetadata(*facts, anchorHostTime, layer);
    capture.name =
        ScreenshotEngine::captureName(CaptureKind::camera, std::nullopt, layer.now) + layer.nameSuffix;
    if (auto poster = decodePosterFrame(movie))
        capture.previewImage = std::move(*poster);
    capture.thumbnailJPEG = Thumbnailer::jpegThumbnail(capture.previewImage);
    capture.durationMs = std::llround(facts->durationMs);
    return std::optional(std::move(capture));
}

std::expected<std::optional<CaptureResult>, Failure> makeCameraCapture(CameraLayer layer) {
    const auto files = lastingFiles(std::move(layer.files));
    if (!files)
        return std::unexpected(files.error());
    const CameraAlignment alignment = alignToScreen(*files, layer.screen);
    if (alignment.movies.empty())
        return std::nullopt;
    const bool isJoined = alignment.movies.size() > 1;
    auto joined = isJoined ? MovieStitcher::join(alignment.movies) : alignment.movies.front().path;
    if (!joined)
        return std::unexpected(std::move(joined.error()));
    const fs::path &movie = *joined;
    const bool isNoted =
        layer.journal.empty() ||
        RecordingJournal::append(layer.journal, recordingLines::cameraMovie(movie, alignment.anchorHostTime));
    auto capture = describeCameraMovie(movie, alignment.anchorHostTime, layer);
    if (capture && isJoined && isNoted)
        for (const PlacedMovie &piece : alignment.movies) {
            std::error_code ignored;
            fs::remove(piece.path, ignored);
        }
    return capture;
}

} // namespace vantrell
