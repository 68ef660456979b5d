// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Records flashes and beeps that are made at the same moment, with pauses, and tells how far they are apart
// in the movie; with a camera also how far that one's movie is from the screen's.
//
//     bench_sync [--seconds 600] [--pauses 5] [--skew 0] [--keep DIR] [--camera 1 [--gap 60]] [--wayland 1]

#include "BeepPlayer.h"
#include "CameraOffsets.h"
#include "FlashScene.h"
#include "MovieSigns.h"
#include "Offsets.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/ClockFace.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/Sound/SoundSession.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell::bench {

namespace {

constexpr int screenWidth = 1280;
constexpr int screenHeight = 720;
constexpr std::chrono::seconds pauseLength{3};

struct Options {
    double seconds = 600;
    int pauses = 5;
    /// How much faster the sound devices' clock runs, in millionths.
    int skew = 0;
    std::string keep;
    bool camera = false;
    /// For so many seconds in the middle the camera sends nothing.
    int gap = 0;
    /// On sway, through the portal.
    bool wayland = false;
};

Options parse(int argc, char **argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const char *value = argv[i + 1];
        if (name == "--seconds")
            options.seconds = std::strtod(value, nullptr);
        else if (name == "--pauses")
            options.pauses = int(std::strtol(value, nullptr, 10));
        else if (name == "--skew")
            options.skew = int(std::strtol(value, nullptr, 10));
        else if (name == "--keep")
            options.keep = value;
        else if (name == "--camera")
            options.camera = std::string_view(value) != "0";
        else if (name == "--gap")
            options.gap = int(std::strtol(value, nullptr, 10));
        else if (name == "--wayland")
            options.wayland = std::string_view(value) != "0";
        else
            std::exit(2);
    }
    const double stretch = options.seconds / (options.pauses + 1);
    if (argc % 2 == 0 || options.seconds <= 0 || options.pauses < 0 || options.gap < 0 ||
        (options.gap > 0 && (!options.camera || options.gap >= stretch)))
        std::exit(2);
    return options;
}

/// Its own sound server; with a skew, one whose clock is wrong.
std::unique_ptr<testing::SoundSession> startSound(int skew) {
    if (skew == 0)
        return std::make_unique<testing::SoundSession>();
    const testing::ScopedEnvironment library("LD_PRELOAD", SKEWED_CLOCK);
    const testing::ScopedEnvironment amount("SKEW_PPM", std::to_string(skew));
    return std::make_unique<testing::SoundSession>();
}

/// Records for the wanted time, pauses not counted. What the program says of it; nothing when it failed.
nlohmann::json record(const Options &options, const std::string &folder, const testing::SwaySession *sway,
                      testing::VirtualCamera *camera) {
    testing::CaptureProgram program;
    if (sway) {
        for (const auto &[name, value] : sway->environment())
            if (name != "HOME")
                program.set(name, value);
        program.set("VANTRELL_BACKEND", "wayland");
    }
    std::vector<std::string> arguments{"record",   "--display", "--mic", "--system-audio",
                                       "--output", folder,      "--json"};
    if (options.camera)
        arguments.push_back("--camera");
    program.start(arguments);
    program.waitForLog("recording started");
    const std::chrono::milliseconds stretch(int(options.seconds * 1000 / (options.pauses + 1)));
    for (int i = 0; i <= options.pauses && program.isRunning(); ++i) {
        if (i > 0) {
            program.signal(SIGUSR1);
            program.waitForLog("recording paused");
            program.poll(pauseLength);
            program.signal(SIGUSR1);
            program.waitForLog("recording resumed");
        }
        const std::chrono::seconds gap(i == options.pauses / 2 ? options.gap : 0);
        program.poll((stretch - gap) / 2);
        if (gap.count() > 0) {
            camera->hang();
            program.poll(gap);
            camera->goOn();
        }
        program.poll((stretch - gap) / 2);
    }
    program.signal(SIGINT);
    const auto ended = program.finish();
    if (ended.exitCode == 0)
        return ended.json();
    std::fprintf(stderr, "the recording failed: %s\n", ended.errors.c_str());
    return {};
}

/// How much faster than the host's the clock of a player's device ran between two moments, in millionths.
double measuredSkew(const BeepPlayer &player, double first, double last) {
    const auto early = player.startTime(first);
    const auto late = player.startTime(last);
    return early && late ? (*early - *late) / (last - first) * 1e6 : 0;
}

/// On the screen is what the compositor has drawn, some time after it was painted.
void showAsComposited(std::vector<Flash> &flashes, const std::vector<double> &pictures) {
    // The painter hears late that it has painted. Before that nothing has changed for longer.
    constexpr double hearsLate = 0.05;
    std::vector<double> lags;
    for (Flash &flash : flashes) {
        const auto shown = std::ranges::lower_bound(pictures, flash.shownAt - hearsLate);
        // Of a later picture it is not in.
        if (shown == pictures.end() || *shown > flash.shownAt + flashLasts) {
            flash.heardAt = {};
            continue;
        }
        lags.push_back(*shown - flash.shownAt);
        flash.shownAt = *shown;
    }
    std::ranges::sort(lags);
    if (!lags.empty())
        std::printf("the compositor shows a flash %.1f ms after it was painted (median; at most %.1f ms)\n",
                    lags[lags.size() / 2] * 1000, lags.back() * 1000);
}

int run(const Options &options) {
    std::unique_ptr<testing::SwaySession> sway;
    if (options.wayland)
        sway = std::make_unique<testing::SwaySession>(testing::SwaySession::Options{
            .width = screenWidth, .height = screenHeight, .notesPictures = true});
    const testing::X11Session screen(
        {.width = screenWidth, .height = screenHeight, .isOnWayland = options.wayland});
    const auto sound = startSound(options.skew);
    BeepPlayer microphone(std::string(testing::SoundSession::microphone) + "_in");
    BeepPlayer speaker(testing::SoundSession::speaker);
    if (!testing::eventually([&] { return microphone.isSteady() && speaker.isSteady(); })) {
        std::fprintf(stderr, "the sound server does not play\n");
        return 1;
    }
    const double begun = hostNow();
    FlashScene scene(screenWidth, screenHeight, {&microphone, &speaker});
    const testing::TemporaryFolder temporary;
    std::unique_ptr<testing::VirtualCamera> camera;
    if (options.camera) {
        testing::VirtualCamera::Options face;
        face.modes = {{.size = {1280, 720}}};
        face.numberAt = testing::clockface::numberAt;
        camera = std::make_unique<testing::VirtualCamera>(std::move(face));
    }
    const nlohmann::json recording = record(
        options, options.keep.empty() ? temporary.path().string() : options.keep, sway.get(), camera.get());
    const double ended = hostNow();
    auto flashes = scene.finish();
    if (sway)
        showAsComposited(flashes, sway->sentPictures());
    if (recording.is_null())
        return 1;

    const MovieSigns signs = readSigns(recording["file"].get<std::string>());
    std::printf(
        "%.1f s recorded with %d pauses; %zu flashes made; the sound devices' clock measures %+.0f ppm "
        "(microphone) and %+.0f ppm (speaker)\n",
        signs.durationSeconds, options.pauses, flashes.size(), measuredSkew(microphone, begun, ended),
        measuredSkew(speaker, begun, ended));
    // The movie's first sound is the microphone's.
    for (std::size_t i = 0; i < signs.tracks.size() && i < outputs; ++i)
        printOffsets(signs, signs.tracks[i], flashes, i);
    if (options.camera)
        printCameraOffsets(recording, signs, flashes);
    return signs.tracks.size() == outputs ? 0 : 1;
}

} // namespace
} // namespace vantrell::bench

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    return vantrell::bench::run(vantrell::bench::parse(argc, argv));
}
