// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/FinishedRecording.h"

#include "Capture/ScreenshotEngine.h"
#include "Capture/Thumbnailer.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/PosterFrame.h"
#include "Recording/SidecarEvents.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

/// What the movie shows, which is of even sizes whatever was asked for.
PixelSize pictureSize(const MovieFacts &facts, PixelSize otherwise) {
    const auto video = std::ranges::find(facts.tracks, true, &MovieFacts::Track::isVideo);
    return video == facts.tracks.end() ? otherwise : video->size;
}

CaptureMetadata recordingMetadata(const FinishedRecording &recording, const MovieFacts &facts) {
    const RecordingOptions &options = recording.options;
    const CaptureTarget &target = options.target;
    CaptureMetadata metadata;
    metadata.type = "recording";
    metadata.capturedAt = iso8601(recording.startedAt);
    metadata.source = target.kind();
    metadata.display = target.displayInfo();
    metadata.window = target.windowInfo();
    metadata.region = target.region();
    metadata.pixelSize = pictureSize(facts, target.source.size());
    RecordingInfo info;
    info.fps = options.fps;
    info.durationMs = facts.durationMs;
    info.events = sidecarEvents(recording.events, target.display.frame, target.rect, recording.segments);
    info.anchorHostTime = recording.segments.front().anchorHostTime;
    info.cursorInVideo = !options.separateCursor;
    info.autoCamera = options.autoCamera;
    info.recordingId = options.recordingId;
    metadata.recording = std::move(info);
    return metadata;
}

} // namespace

std::expected<CaptureResult, PlatformError> describeRecording(const FinishedRecording &recording) {
    const auto facts = readMovieFacts(recording.movie);
    if (!facts)
        return std::unexpected(facts.error());
    CaptureResult capture;
    capture.mime = "video/quicktime";
    capture.fileURL = recording.movie;
    capture.metadata = recordingMetadata(recording, *facts);
    capture.name = ScreenshotEngine::captureName({}, recording.options.target.window, recording.now) +
                   recording.nameSuffix;
    if (auto poster = decodePosterFrame(recording.movie))
        capture.previewImage = std::move(*poster);
    capture.thumbnailJPEG = Thumbnailer::jpegThumbnail(capture.previewImage);
    capture.durationMs = std::llround(facts->durationMs);
    return capture;
}

} // namespace vantrell
