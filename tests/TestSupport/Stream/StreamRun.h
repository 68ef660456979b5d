// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureBackend.h"
#include "Platform/CaptureStreamFactory.h"
#include "TestSupport/TemporaryFolder.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vantrell::testing {

/// One capture stream of a test with what it tells, into a file of its own.
class StreamRun {
public:
    /// In the source's own size, with that pointer.
    StreamRun(CaptureStreamFactory &streams, std::shared_ptr<CaptureSource> source,
              CursorMode cursor = CursorMode::leftOut);
    ~StreamRun();

    std::expected<void, PlatformError> start();
    /// Stops and waits for the finished file.
    std::expected<RecordingSummary, PlatformError> stop();
    /// Waits until the stream has ended on its own.
    std::optional<PlatformError> spontaneousEnd();

    std::filesystem::path movie() const { return m_folder / "stretch.mov"; }
    std::filesystem::path folder() const { return m_folder.path(); }
    std::optional<double> firstFrame() const;
    int firstFrames() const;
    /// Where the pointer was told to be, in parts of the picture.
    std::vector<Point> pointers() const;
    /// Host times of the calls.
    double startedAt() const { return m_startedAt; }
    double stoppedAt() const { return m_stoppedAt; }

private:
    const std::shared_ptr<CaptureSource> m_source;
    TemporaryFolder m_folder;
    mutable std::mutex m_mutex;
    int m_firstFrames = 0;
    std::vector<Point> m_pointers;
    std::optional<double> m_firstFrame;
    std::optional<PlatformError> m_end;
    std::optional<std::expected<RecordingSummary, PlatformError>> m_result;
    double m_startedAt = 0;
    double m_stoppedAt = 0;
    std::unique_ptr<CaptureStream> m_stream;
};

/// What the backend finds; none when it finds nothing.
std::shared_ptr<CaptureSource> chosen(CaptureBackend &backend, CaptureRequest request);
std::shared_ptr<CaptureSource> chosenArea(CaptureBackend &backend, const PixelRect &area);

} // namespace vantrell::testing
