// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"
#include "Support/AtomicFile.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/Movie/NumberedPictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <ranges>
#include <set>

namespace vantrell::testing {

namespace {

/// A screen on which numbers change 30 times a second and somebody clicks, and when each of it happened.
class BusyScreen {
public:
    void runFor(double seconds) {
        const double until = hostNow() + seconds;
        while (hostNow() < until) {
            const double next = hostNow() + 1 / 30.0;
            m_painter.drawNumber(++m_number, 32, 48);
            m_painter.sync();
            numbers[m_number] = hostNow();
            if (m_number % 12 == 0) {
                m_session.run({"xdotool", "click", "1"});
                clicks.push_back(hostNow());
            }
            eventually([next] { return hostNow() >= next; });
        }
    }

    std::map<std::uint32_t, double> numbers;
    std::vector<double> clicks;

private:
    X11Session m_session;
    X11Painter m_painter;
    std::uint32_t m_number = 0;
};

struct Span {
    double from;
    double until;
};

/// A recording that is killed, and when it was surely recording.
class KilledRecording {
public:
    KilledRecording(BusyScreen &screen, std::mt19937 &random) : m_screen(screen), m_random(random) {}

    /// Records with pauses and a stop, and kills at some moment of it.
    void run(const std::vector<std::string> &options = {}) {
        std::vector<std::string> arguments{"record", "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        program.start(arguments);
        program.waitForLog("recording started");
        begin();
        const int pauses = int(m_random() % 3);
        for (int i = 0; i < pauses; ++i) {
            m_screen.runFor(upTo(1.2));
            end(SIGUSR1);
            if (m_random() % 5 == 0)
                return kill(upTo(0.1));
            program.waitForLog("recording paused");
            m_screen.runFor(upTo(0.2));
            program.signal(SIGUSR1);
            if (m_random() % 8 == 0)
                return kill(upTo(0.1));
            program.waitForLog("recording resumed");
            begin();
        }
        m_screen.runFor(2.2 + upTo(1));
        if (m_random() % 2 == 0) {
            killedAt = hostNow();
            spans.back().until = killedAt;
            return kill(0);
        }
        end(SIGINT);
        kill(upTo(0.15));
    }

    CaptureProgram program;
    std::vector<Span> spans;
    double killedAt = 0;
    CaptureProgram::Ended ended;

private:
    double upTo(double seconds) { return seconds * double(m_random() % 1000) / 1000; }
    void begin() { spans.push_back({hostNow(), 1e9}); }
    void end(int signal) {
        spans.back().until = hostNow();
        program.signal(signal);
    }
    void kill(double delay) {
        const double due = hostNow() + delay;
        eventually([due] { return hostNow() >= due; });
        killedAt = hostNow();
        program.signal(SIGKILL);
        ended = program.finish();
    }

    BusyScreen &m_screen;
    std::mt19937 &m_random;
};

/// What has to be there: everything up to 2 s before the kill.
template <typename Times, typename Time>
int dueCount(const Times &happenings, const KilledRecording &recording, Time time) {
    return int(std::ranges::count_if(happenings, [&](const auto &happening) {
        const double when = time(happening);
        return when < recording.killedAt - 2 &&
               std::ranges::any_of(
                   recording.spans,
                   [when](const Span &span) { return when > span.from + 0.1 && when < span.until - 0.1; });
    }));
}

/// A machine that has other things to do drops pictures, but not the end.
constexpr double picturesDropped = 0.5;

void expectLong(double seconds, const KilledRecording &recording) {
    double due = 0;
    for (const Span &span : recording.spans)
        due += std::max(std::min(span.until, recording.killedAt - 2) - span.from, 0.0);
    EXPECT_GE(seconds, due - picturesDropped);
}

std::set<std::uint32_t> numbersIn(const std::filesystem::path &movie, const KilledRecording &recording) {
    std::set<std::uint32_t> seen;
    const double duration = forEachPicture(movie, [&seen](const MoviePicture &picture) {
        if (const auto number =
                framecode::read(picture.luma + 48 * picture.lumaStride + 32, picture.lumaStride))
            seen.insert(*number);
    });
    expectLong(duration, recording);
    return seen;
}

/// The movies that have a sidecar beside them: the camera's, or those of anything else.
std::vector<std::filesystem::path> deliveredCaptures(const CaptureProgram &program, bool byCamera) {
    std::vector<std::filesystem::path> movies;
    for (const std::string &name : program.captureFiles()) {
        const std::filesystem::path file = program.captures() / name;
        if (file.extension() != ".json")
            continue;
        const auto sidecar = CaptureMetadata::fromJson(readFile(file).value_or(""));
        EXPECT_TRUE(sidecar) << file;
        if (sidecar && (sidecar->source == CaptureKind::camera) == byCamera)
            movies.push_back(std::filesystem::path(file).replace_extension(".mov"));
    }
    EXPECT_LE(movies.size(), 1U);
    return movies;
}

void expectAllButTheLastTwoSeconds(KilledRecording &recording, const BusyScreen &screen) {
    const int dueNumbers =
        dueCount(screen.numbers, recording, [](const auto &entry) { return entry.second; });
    const int dueClicks = dueCount(screen.clicks, recording, [](double when) { return when; });
    // A kill that came too late finds everything delivered.
    auto told = recording.ended;
    if (told.exitCode != 0)
        told = recording.program.run({"recover", "--json"});
    EXPECT_EQ(told.exitCode, 0) << told.errors;
    // Killed between delivering and saying so: nothing to recover, the capture is there.
    const auto all = deliveredCaptures(recording.program, false);
    if (all.empty()) {
        EXPECT_EQ(dueNumbers, 0) << told.errors;
        return;
    }
    const std::filesystem::path *const delivered = &all.front();
    const nlohmann::json json = told.output.empty() ? nlohmann::json{{"file", *delivered}} : told.json();
    // Of a recording that was delivered half, the other half is told.
    if (json.contains("pixelSize") && !json["name"].get<std::string>().starts_with("Camera "))
        EXPECT_EQ(json["file"], delivered->string());
    const std::set<std::uint32_t> seen = numbersIn(*delivered, recording);
    int found = 0;
    for (const std::uint32_t number : seen)
        found +=
            dueCount(std::vector{screen.numbers.at(number)}, recording, [](double when) { return when; });
    EXPECT_GE(found, dueNumbers / 2) << json << told.errors;

    const auto sidecar = CaptureMetadata::fromJson(
        readFile(std::filesystem::path(*delivered).replace_extension(".json")).value_or(""));
    ASSERT_TRUE(sidecar) << sidecar.error().message;
    EXPECT_GE(std::ranges::count(sidecar->recording->events, InputEvent::Kind::down, &InputEvent::kind),
              dueClicks)
        << json;
    if (json.contains("recovered"))
        EXPECT_TRUE(json["name"].get<std::string>().ends_with(" (recovered)")) << json;
    // It is offered once.
    const auto again = recording.program.run({"recover", "--json"});
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_EQ(again.output, "");
}

/// The same of what the camera saw, which begins a little later, on a busy machine a good deal.
void expectTheCameraBeside(KilledRecording &recording, const VirtualCamera &camera) {
    constexpr double latestBegin = 1;
    std::map<std::uint32_t, double> due;
    for (int number = 0; number < camera.sent(); ++number) {
        const double taken = camera.hostTimeOf(std::uint32_t(number));
        if (dueCount(std::vector{taken, taken - latestBegin}, recording, std::identity()) == 2)
            due[std::uint32_t(number)] = taken;
    }
    const auto delivered = deliveredCaptures(recording.program, true);
    if (due.empty())
        return;
    const double newest = std::ranges::max(due | std::views::values);
    ASSERT_FALSE(delivered.empty());
    double last = 0;
    for (const NumberedPicture &picture : numberedPicturesIn(delivered.front()))
        last = std::max(last, camera.hostTimeOf(picture.number));
    EXPECT_GE(last, newest - picturesDropped) << delivered.front();
}

TEST(RecoverCommand, findsNothingWhereNothingWasCutOff) {
    CaptureProgram program;
    const auto ended = program.run({"recover"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_NE(ended.errors.find("Nothing to recover"), std::string::npos) << ended.errors;
}

/// VANTRELL_KILLS sets the number; the seed is said so that a failure can be had again.
TEST(RecoverCommand, losesAtMostTwoSecondsWhenKilledAtAnyMoment) {
    const char *kills = std::getenv("VANTRELL_KILLS");
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int left = kills ? std::atoi(kills) : 4; left > 0; --left) {
        BusyScreen screen;
        KilledRecording recording(screen, random);
        recording.run();
        expectAllButTheLastTwoSeconds(recording, screen);
        if (HasFailure())
            return;
    }
}

TEST(RecoverCommand, losesAtMostTwoSecondsOfTheCameraEither) {
    const char *kills = std::getenv("VANTRELL_KILLS");
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int left = kills ? std::atoi(kills) : 2; left > 0 && !HasFailure(); --left) {
        BusyScreen screen;
        const SoundSession server;
        const VirtualCamera camera;
        KilledRecording recording(screen, random);
        recording.run({"--camera"});
        expectAllButTheLastTwoSeconds(recording, screen);
        expectTheCameraBeside(recording, camera);
    }
}

} // namespace
} // namespace vantrell::testing
