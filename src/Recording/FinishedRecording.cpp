// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/FinishedRecording.h"

#include "Capture/ScreenshotEngine.h"
#include "Capture/Thumbnailer.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/PosterFrame.h"
#include "Recording/SidecarEvents.h"

#include <cmath>

namespace vantrell {

namespace {

CaptureMetadata recordingMetadata(const FinishedRecording &recording, double durationMs) {
    const RecordingOptions &options = recording.options;
    const RecordingTarget &target = options.target;
    CaptureMetadata metadata;
    metadata.type = "recording";
    metadata.capturedAt = iso8601(recording.startedAt);
    metadata.source = target.kind();
    metadata.display = {{target.display.frame.width, target.display.frame.height}, target.scale};
    if (target.window)
        metadata.window = ScreenshotEngine::windowInfo(*target.window, target.rect);
    if (metadata.source == "region")
        metadata.region = target.rect;
    metadata.pixelSize = target.source.size();
    RecordingInfo info;
    info.fps = options.fps;
    info.durationMs = durationMs;
    info.events = sidecarEvents(recording.events, target.display.frame, target.rect, recording.segments);
    info.anchorHostTime = recording.segments.front().anchorHostTime;
    info.cursorInVideo = !options.separateCursor;
    info.autoCamera = options.autoCamera;
    metadata.recording = std::move(info);
    return metadata;
}

} // namespace

std::expected<CaptureResult, PlatformError> describeRecording(const FinishedRecording &recording) {
    const auto facts = readMovieFacts(recording.movie);
    if (!facts)
        return std::unexpected(facts.error());
    CaptureResult capture;
    capture.kind = "video";
    capture.mime = "video/quicktime";
    capture.fileURL = recording.movie;
    capture.metadata = recordingMetadata(recording, facts->durationMs);
    capture.name = ScreenshotEngine::captureName("recording", capture.metadata.window, recording.now) +
                   recording.nameSuffix;
    if (auto poster = decodePosterFrame(recording.movie))
        capture.previewImage = std::move(*poster);
    capture.thumbnailJPEG = Thumbnailer::jpegThumbnail(capture.previewImage);
    capture.durationMs = std::llround(facts->durationMs);
    return capture;
}

} // namespace vantrell
