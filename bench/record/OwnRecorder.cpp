// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "OwnRecorder.h"

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Support/Log.h"

#include <QCoroTask>

#include <csignal>
#include <cstdio>
#include <semaphore>

namespace vantrell::bench {

int recordOwn(const std::filesystem::path &movie, PixelSize screen, bool showsCursor) {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    installLogging();

    auto backend = X11CaptureBackend::create();
    if (!backend)
        return 1;
    const auto chosen =
        QCoro::waitFor((*backend)->choose({CaptureRequest::Area{{0, 0, screen.width, screen.height}}}, {}));
    if (!chosen)
        return 1;
    CaptureStreamConfiguration configuration;
    configuration.output = screen;
    configuration.cursor = showsCursor ? CursorMode::inPicture : CursorMode::leftOut;
    configuration.outputFile = movie;
    std::binary_semaphore ended(0);
    int result = 1;
    CaptureStreamEvents events;
    events.recordingFinished = [&](const RecordingSummary &summary) {
        std::printf("%lld frames, %lld dropped\n", static_cast<long long>(summary.frames),
                    static_cast<long long>(summary.droppedFrames));
        result = 0;
        ended.release();
    };
    events.recordingFailed = [&](const PlatformError &error) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
        ended.release();
    };
    StagedStreamFactory streams;
    const auto stream = streams.makeStream(*chosen->source, configuration, events);
    if (const auto started = QCoro::waitFor(stream->start({})); !started) {
        std::fprintf(stderr, "%s\n", std::get<PlatformError>(started.error()).message.c_str());
        return 1;
    }
    int signal = 0;
    ::sigwait(&interrupt, &signal);
    stream->stop();
    ended.acquire();
    return result;
}

} // namespace vantrell::bench
