// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "OwnCameraRecorder.h"

#include "Media/Camera/StagedCameraSessionFactory.h"
#include "Platform/Camera/DesktopCameraBackend.h"
#include "Support/EventLoop.h"
#include "Support/Log.h"
#include "Support/UniqueFd.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>

namespace vantrell::bench {

int recordOwnCamera(const std::filesystem::path &movie, int previewPixels) {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    const UniqueFd signals(::signalfd(-1, &interrupt, SFD_CLOEXEC));
    installLogging();

    const auto cameras = DesktopCameraBackend::create();
    StagedCameraSessionFactory sessions(*cameras, EncoderPreference::software);
    const auto session = sessions.makeSession(std::nullopt);
    if (!QCoro::waitFor(session->open({})))
        return 1;
    QImage shown;
    if (previewPixels > 0)
        session->showPreview(previewPixels, [&] { shown = session->preview(); });
    int result = 1;
    const EventLoop loop = EventLoop::current();
    const auto end = [&](int code) {
        loop.post([&result, code] {
            result = code;
            QCoreApplication::quit();
        });
    };
    if (!movie.empty())
        session->startRecording(movie, {.recordingFinished = [&](const RecordingSummary &) { end(0); },
                                        .recordingFailed = [&](const PlatformError &) { end(1); }});
    const QSocketNotifier interrupted(signals.get(), QSocketNotifier::Read);
    QObject::connect(&interrupted, &QSocketNotifier::activated, &interrupted, [&] {
        session->stopRecording();
        if (movie.empty())
            end(0);
    });
    QCoreApplication::exec();
    return result;
}

} // namespace vantrell::bench
