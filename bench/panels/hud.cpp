// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the panel of a running recording costs: CPU seconds a minute of this process, with the time running, a
// microphone that is spoken into, and the screen behind it looked at.
//
//     bench_hud [SECONDS]     20 by default; on a virtual display of its own

#include "OwnProcessorTime.h"

#include "Overlay/RecordingHUD.h"
#include "Platform/X11/X11StillCapture.h"
#include "Support/SystemClock.h"
#include "TestSupport/Desktop/X11Session.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace vantrell;

int main(int argc, char **argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 20;
    const testing::X11Session session({.width = 1920, .height = 1080});
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    Settings settings((folder.path() + "/settings.ini").toStdString());
    SystemClock clock;
    X11StillCapture stills;
    const auto state = std::make_shared<RecordingHUDState>(clock, 1200, true);
    RecordingHUD hud({stills, settings, clock}, state);
    hud.show({});
    state->startTimer();
    QTimer voice;
    QObject::connect(&voice, &QTimer::timeout, &voice,
                     [&, at = 0]() mutable { state->micLevel = std::abs(std::sin(at++ * 0.7)) * 0.9; });
    voice.start(100);
    // What is made once does not count.
    QTimer::singleShot(1000, &voice, [&] {
        const double before = ownProcessorTime();
        QTimer::singleShot(int(seconds * 1000), &voice, [&, before] {
            std::printf("a minute of HUD: %.3f s CPU\n", (ownProcessorTime() - before) * 60 / seconds);
            QApplication::quit();
        });
    });
    return QApplication::exec();
}
