// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"
#include "Support/AtomicFile.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/ClockFace.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Movie/NumberedPictures.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>

using ::testing::HasSubstr;

namespace vantrell::testing {

namespace {

double anchorIn(const nlohmann::json &capture) {
    const auto sidecar =
        CaptureMetadata::fromJson(readFile(capture["sidecar"].get<std::string>()).value_or(""));
    EXPECT_TRUE(sidecar) << sidecar.error().message;
    return sidecar->recording->anchorHostTime.value_or(0);
}

/// For each picture of the camera by how many milliseconds it is shown later than what the screen showed at
/// the moment at which it was taken, when both movies are laid on each other by their anchors.
std::vector<double> delays(const nlohmann::json &json) {
    const double offset = anchorIn(json["camera"]) - anchorIn(json);
    const auto screen = numberedPicturesIn(json["file"].get<std::string>());
    std::vector<double> found;
    for (const NumberedPicture &seen : numberedPicturesIn(json["camera"]["file"].get<std::string>())) {
        const auto apart = [&](const NumberedPicture &other) {
            return clockface::between(other.number, seen.number);
        };
        const auto nearest = std::ranges::min_element(
            screen, {}, [&](const NumberedPicture &other) { return std::abs(apart(other)); });
        // Elsewhere one of both was not recorded.
        if (nearest != screen.end() && std::abs(apart(*nearest)) < 60)
            found.push_back((seen.seconds + offset - nearest->seconds) * 1000 - apart(*nearest));
    }
    return found;
}

/// In the beginning, the middle and the end. The suite's machine may be busy; single pictures of the screen
/// come late then.
void expectInStep(const nlohmann::json &json, std::size_t leastPictures) {
    std::vector<double> apart = delays(json);
    ASSERT_GT(apart.size(), leastPictures);
    for (const auto third : {0U, 1U, 2U}) {
        const std::size_t from = third * apart.size() / 3;
        std::vector<double> part(apart.begin() + std::ptrdiff_t(from),
                                 apart.begin() + std::ptrdiff_t(from + apart.size() / 3));
        std::ranges::sort(part);
        EXPECT_LE(std::abs(part[part.size() / 2]), 20) << "part " << third;
    }
    EXPECT_GT(std::ranges::count_if(apart, [](double ms) { return std::abs(ms) <= 20; }),
              std::ptrdiff_t(apart.size() * 3 / 4));
}

class CameraCommandTest : public ::testing::Test {
protected:
    /// Shows the time on the screen for so long.
    void paintFor(double seconds) {
        const double until = hostNow() + seconds;
        while (hostNow() < until) {
            const double next = hostNow() + 1 / 60.0;
            painter.drawNumber(clockface::numberAt(hostNow()), 0, 0);
            painter.sync();
            eventually([next] { return hostNow() >= next; });
        }
    }

    static VirtualCamera::Options clockFace() {
        VirtualCamera::Options options;
        options.numberAt = clockface::numberAt;
        return options;
    }

    X11Session session{{.width = 480, .height = 270}};
    X11Painter painter;
    SoundSession server;
    VirtualCamera camera{clockFace()};
    LocalService service;
    CaptureProgram program;
};

TEST_F(CameraCommandTest, recordsTheCameraInStepWithTheScreenThroughPausesAndUploadsBoth) {
    program.set("VANTRELL_API_URL", service.url());
    program.set("VANTRELL_API_KEY", service.createKey());
    EXPECT_THAT(program.run({"list", "cameras", "--json"}).output, HasSubstr("Virtual camera"));
    const std::filesystem::path folder = program.folder() / "out";
    program.start({"record", "--camera", "--json", "--output", folder, "--upload"});
    program.waitForLog("recording started");
    for (const double pause : {0.7, 0.4}) {
        paintFor(1.5);
        program.signal(SIGUSR1);
        program.waitForLog("recording paused");
        paintFor(pause);
        program.signal(SIGUSR1);
        program.waitForLog("recording resumed");
    }
    paintFor(1.5);
    program.signal(SIGINT);
    const auto ended = program.finish();
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;
    const nlohmann::json json = ended.json();
    EXPECT_NE(json["assetId"], json["camera"]["assetId"]);
    for (const char *file : {"file", "sidecar", "thumbnail"})
        EXPECT_EQ(std::filesystem::path(json["camera"][file].get<std::string>()).parent_path(), folder);
    EXPECT_NEAR(json["camera"]["durationMs"].get<double>(), json["durationMs"].get<double>(), 700);

    expectInStep(json, 60);
}

/// VANTRELL_KILLS sets how often the camera is pulled out; the seed is said so that a failure can be had
/// again.
TEST_F(CameraCommandTest, staysInStepHoweverOftenTheCameraIsPulledOutAndTheDefaultChanges) {
    const char *const asked = std::getenv("VANTRELL_KILLS");
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto upTo = [&](double seconds) { return seconds * double(random() % 1000) / 1000; };
    VirtualCamera other({.name = "other"});
    server.setDefaultCamera("vcam");
    program.start({"record", "--camera", "--json"});
    program.waitForLog("recording started");
    paintFor(1);
    server.setDefaultCamera("other");
    for (int left = asked ? std::atoi(asked) : 2; left > 0; --left) {
        const bool isPaused = random() % 3 == 0;
        const bool isPausedMeanwhile = isPaused && random() % 2 == 0;
        const auto pause = [&](const char *until) {
            program.signal(SIGUSR1);
            program.waitForLog(until);
        };
        if (isPaused && !isPausedMeanwhile)
            pause("recording paused");
        // Or the whole server goes away and comes back.
        const bool isServerKilled = random() % 4 == 0;
        if (isServerKilled)
            server.killServer();
        camera.unplug();
        paintFor(upTo(1));
        if (isPausedMeanwhile)
            pause("recording paused");
        if (isServerKilled)
            server.startServer();
        camera.plug();
        paintFor(upTo(0.5));
        if (isPaused)
            pause("recording resumed");
        const int sent = camera.sent();
        EXPECT_TRUE(eventually([&] {
            paintFor(0.05);
            return camera.sent() > sent + 15;
        }));
        paintFor(upTo(1));
    }
    program.signal(SIGINT);
    const auto ended = program.finish();
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;
    EXPECT_EQ(other.sent(), 0);
    EXPECT_FALSE(ended.json().contains("cameraProblem")) << ended.output;
    expectInStep(ended.json(), 30);
}

TEST_F(CameraCommandTest, recordsTheScreenWhateverBecomesOfTheCamera) {
    program.start({"record", "--camera", "unknown", "--json"});
    program.waitForLog("recording started");
    paintFor(1.5);
    camera.unplug();
    program.waitForLog("camera stopped");
    paintFor(0.5);
    program.signal(SIGINT);
    const auto unplugged = program.finish();
    ASSERT_EQ(unplugged.exitCode, 0) << unplugged.errors;
    const nlohmann::json json = unplugged.json();
    EXPECT_EQ(json["cameraProblem"], "The camera was disconnected");
    EXPECT_GT(json["camera"]["durationMs"], 500);
    EXPECT_LT(json["camera"]["durationMs"], json["durationMs"]);

    const auto without = program.run({"record", "--camera", "--seconds", "1", "--json"});
    ASSERT_EQ(without.exitCode, 0) << without.errors;
    EXPECT_EQ(without.json()["cameraProblem"], "No camera is connected");
    EXPECT_FALSE(without.json().contains("camera"));
    EXPECT_THAT(without.errors, HasSubstr("camera init: no capture device found"));
    EXPECT_THAT(program.run({"recover"}).errors, HasSubstr("Nothing to recover"));

    // A computer that has the PipeWire library and none of its parts.
    program.set("SPA_PLUGIN_DIR", "/nonexistent");
    const auto bare = program.run({"record", "--camera", "--seconds", "1", "--json"});
    ASSERT_EQ(bare.exitCode, 0) << bare.errors;
    EXPECT_TRUE(bare.json().contains("cameraProblem"));
}

} // namespace
} // namespace vantrell::testing
