// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/HostTime.h"
#include "TestSupport/Movie/NumberedPictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <random>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

enum class Part { pipeWire, portal, portalBackend, compositor, ourselves };
constexpr std::array<const char *, 5> partNames{"PipeWire", "the portal", "the portal's part for sway",
                                                "the compositor", "ourselves"};

void killPart(SwaySession &session, CaptureProgram &program, Part part) {
    switch (part) {
    case Part::pipeWire:
        return session.ground().killPipeWire();
    case Part::portal:
        return session.ground().killPortal();
    case Part::portalBackend:
        return session.killBackend();
    case Part::compositor:
        return session.killCompositor();
    case Part::ourselves:
        return program.signal(SIGKILL);
    }
}

/// Nobody has the desktop send pictures any more.
bool isCastOver(const SwaySession &session) {
    return eventually([&] {
        const std::size_t before = session.sentPictures().size();
        eventually([] { return false; }, 300ms);
        return session.sentPictures().size() == before;
    });
}

/// VANTRELL_KILLS sets the number; the seed is said so that a failure can be had again.
TEST(WaylandCrash, losesAtMostTwoSecondsAndHangsOnNothing) {
    const char *const asked = std::getenv("VANTRELL_KILLS");
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    // A machine that has other things to do shows fewer numbers, and not at once.
    constexpr double late = 0.5;
    for (int left = asked ? std::atoi(asked) : 3; left > 0 && !::testing::Test::HasFailure(); --left) {
        SwaySession session({.notesPictures = true});
        session.showNumbers(20);
        CaptureProgram program;
        for (const auto &[name, value] : session.environment())
            if (name != "HOME")
                program.set(name, value);
        program.set("VANTRELL_BACKEND", "wayland");
        const auto part = Part(random() % partNames.size());
        const bool isBefore = random() % 4 == 0;
        const std::chrono::milliseconds wait(isBefore ? random() % 1000 : 2000 + random() % 3000);
        SCOPED_TRACE(std::string(partNames[std::size_t(part)]) + (isBefore ? " at first" : " recording") +
                     " after " + std::to_string(wait.count()) + " ms, seed " + std::to_string(seed));
        program.start({"record", "--json"});
        if (!isBefore)
            program.waitForLog("recording started");
        const double began = hostNow();
        program.poll(wait);
        const double killed = hostNow();
        killPart(session, program, part);
        program.poll(3s);
        // A recording outlives the portal, and without PipeWire some desktops never answer.
        if (program.isRunning()) {
            EXPECT_TRUE(isBefore || part == Part::portal);
            std::printf("%s: it goes on until it is asked to stop\n", partNames[std::size_t(part)]);
            program.signal(SIGINT);
            program.poll(5s);
            EXPECT_FALSE(program.isRunning());
        }
        auto ended = program.finish();
        if (part == Part::ourselves)
            ended = program.run({"recover", "--json"});
        if (part != Part::compositor)
            EXPECT_TRUE(isCastOver(session));
        if (isBefore || killed - began < 2 + late)
            continue;
        ASSERT_EQ(ended.exitCode, 0) << ended.errors;
        const nlohmann::json json = ended.json();
        EXPECT_GE(json["durationMs"].get<double>() / 1000, killed - began - 2 - late);
        // In the order in which they were shown.
        const auto numbers = numberedPicturesIn(json["file"].get<std::string>(), 32, 48);
        EXPECT_GE(double(numbers.size()), (killed - began - 2 - late) * 10);
        EXPECT_TRUE(std::ranges::is_sorted(numbers, {}, &NumberedPicture::number));
        std::printf("%s after %.1f s: %.1f s kept\n", partNames[std::size_t(part)], killed - began,
                    json["durationMs"].get<double>() / 1000);
    }
}

} // namespace
} // namespace vantrell::testing
