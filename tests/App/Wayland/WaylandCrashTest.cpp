// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/HostTime.h"
#include "TestSupport/Movie/NumberedPictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

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
        for (const auto &[variable, value] : session.environment())
            if (variable != "HOME")
                program.set(variable, value);
        program.set("VANTRELL_BACKEND", "wayland");
        const std::array<std::pair<std::string, std::function<void()>>, 5> parts{
            {{"ourselves", [&] { program.signal(SIGKILL); }},
             {"the compositor", [&] { session.killCompositor(); }},
             {"the portal", [&] { session.ground().killPortal(); }},
             {"the portal's part for sway", [&] { session.killBackend(); }},
             {"PipeWire", [&] { session.ground().killPipeWire(); }}}};
        const auto &[name, kill] = parts[random() % parts.size()];
        const bool isBefore = random() % 4 == 0;
        const std::chrono::milliseconds wait(isBefore ? random() % 1000 : 2000 + random() % 3000);
        SCOPED_TRACE(name + (isBefore ? " at first" : " recording") + " after " +
                     std::to_string(wait.count()) + " ms, seed " + std::to_string(seed));
        program.start({"record", "--json"});
        if (!isBefore)
            program.waitForLog("recording started");
        const double began = hostNow();
        program.poll(wait);
        const double killed = hostNow();
        kill();
        program.poll(3s);
        // A recording outlives the portal, and without PipeWire some desktops never answer.
        if (program.isRunning()) {
            EXPECT_TRUE(isBefore || name == "the portal");
            program.signal(SIGINT);
            program.poll(5s);
            EXPECT_FALSE(program.isRunning());
        }
        auto ended = program.finish();
        if (name == "ourselves")
            ended = program.run({"recover", "--json"});
        if (name != "the compositor")
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
        std::printf("%s after %.1f s: %.1f s kept\n", name.c_str(), killed - began,
                    json["durationMs"].get<double>() / 1000);
    }
}

} // namespace
} // namespace vantrell::testing
