// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11InputMonitor.h"
#include "Recording/RecordingEngine.h"
#include "Support/SystemClock.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/Stream/StreamRun.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vantrell::testing {

namespace {

using Kind = InputEvent::Kind;

/// Records a program that draws a mark where it is clicked or scrolled on, and looks whether the sidecar's
/// events lie in the middle of the marks in the movie.
class ClickPixelsTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto made = X11CaptureBackend::create();
        ASSERT_TRUE(made) << made.error().message;
        backend = std::move(*made);
    }

    void record(CaptureRequest request) {
        source = chosen(*backend, std::move(request));
        ASSERT_TRUE(source);
        const RecordingPorts ports{streams, source, monitor, clock};
        RecordingOptions options;
        options.target = CaptureTarget::of(*source);
        engine = std::make_unique<RecordingEngine>(ports, options);
        const auto started = runTask(engine->start({}));
        ASSERT_TRUE(started) << description(started.error());
        m_scale = options.target.scale;
    }

    /// Clicks (1) or scrolls (4 to 7) there, and waits until the program has drawn its mark.
    void press(X11Application &application, int button, int x, int y) {
        const std::size_t before = application.marks().size();
        ASSERT_EQ(session.run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click",
                               std::to_string(button)}),
                  0);
        ASSERT_TRUE(eventually([&] { return application.marks().size() > before; }));
        ASSERT_EQ(application.marks().back(), (Point{double(x), double(y)}));
    }

    /// Longer than the place of a window is taken for known, and than scrolls are thinned out.
    void pauseFor(double seconds) {
        const double until = clock.hostNow() + seconds;
        eventually([&] { return clock.hostNow() >= until; });
    }

    void expectEventsOnMarks(const std::vector<InputEvent::Kind> &kinds) {
        pauseFor(0.3);
        auto outcome = runTask(engine->stop({}));
        ASSERT_TRUE(outcome) << description(outcome.error());
        std::vector<InputEvent> presses;
        for (const InputEvent &event : outcome->capture.metadata.recording->events) {
            if (event.kind == Kind::down || event.kind == Kind::scroll)
                presses.push_back(event);
        }
        ASSERT_EQ(presses.size(), kinds.size());
        int pictures = 0;
        forEachPicture(outcome->capture.fileURL, [&](const MoviePicture &picture) {
            ++pictures;
            EXPECT_EQ(outcome->capture.metadata.pixelSize, (PixelSize{picture.width, picture.height}));
            for (std::size_t i = 0; i < presses.size(); ++i) {
                EXPECT_EQ(presses[i].kind, kinds[i]);
                if (picture.seconds * 1000 > presses[i].t + 250)
                    expectMark(picture, presses[i]);
            }
        });
        EXPECT_GE(pictures, int(kinds.size()));
    }

    TemporaryFolder data;
    ScopedEnvironment dataHome{"XDG_DATA_HOME", data.path().string()};
    X11Session session{{.width = 800, .height = 600, .windowManager = true}};
    SystemClock clock;
    X11InputMonitor monitor{clock};
    std::unique_ptr<X11CaptureBackend> backend;
    StagedStreamFactory streams;
    std::shared_ptr<CaptureSource> source;
    std::unique_ptr<RecordingEngine> engine;

private:
    void expectMark(const MoviePicture &picture, const InputEvent &event) const {
        const int x = int(std::lround(event.x * m_scale));
        const int y = int(std::lround(event.y * m_scale));
        constexpr int inside = X11Application::markReach;
        constexpr int outside = inside + 2;
        for (const auto &[dx, dy] : {std::pair(0, 0), {-inside, 0}, {inside, 0}, {0, -inside}, {0, inside}})
            EXPECT_GT(picture.at(x + dx, y + dy).y, 190) << spelling(event.kind) << " at " << x << "," << y;
        for (const auto &[dx, dy] : {std::pair(-outside, 0), {outside, 0}, {0, -outside}, {0, outside}})
            EXPECT_LT(picture.at(x + dx, y + dy).y, 150) << spelling(event.kind) << " at " << x << "," << y;
    }

    double m_scale = 1;
};

TEST_F(ClickPixelsTest, fallOnTheMarksOfAWindowThatMoves) {
    X11Application pad({.pixels = {150, 120, 203, 151}});
    ASSERT_TRUE(eventually([&] { return backend->windows()->size() == 1; }));
    record({CaptureRequest::Window{pad.window()}});
    press(pad, 1, 180, 150);
    pad.moveResize({400, 300, 203, 151});
    ASSERT_TRUE(eventually([&] { return source->place()->x == 400; }));
    pauseFor(0.15);
    press(pad, 1, 520, 340);
    pauseFor(0.2);
    press(pad, 4, 590, 440);
    expectEventsOnMarks({Kind::down, Kind::down, Kind::scroll});
}

TEST_F(ClickPixelsTest, fallOnTheMarksOfAWindowThatChangedItsShape) {
    X11Application pad({.pixels = {150, 120, 203, 151}});
    ASSERT_TRUE(eventually([&] { return backend->windows()->size() == 1; }));
    record({CaptureRequest::Window{pad.window()}});
    pad.moveResize({400, 300, 140, 151});
    ASSERT_TRUE(eventually([&] { return source->place()->width == 140; }));
    pauseFor(0.15);
    press(pad, 1, 420, 320);
    pauseFor(0.2);
    press(pad, 4, 530, 440);
    expectEventsOnMarks({Kind::down, Kind::scroll});
}

TEST_F(ClickPixelsTest, fallOnTheMarksInADisplayThatMoves) {
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "LEFT", "400/100x600/150+0+0", "screen"}), 0);
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "400/100x600/150+400+0", "none"}), 0);
    X11Application pad({.pixels = {250, 250, 300, 150}});
    record({CaptureRequest::WholeDisplay{"RIGHT"}});
    pauseFor(0.2);
    ASSERT_EQ(session.run({"xrandr", "--delmonitor", "RIGHT"}), 0);
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "400/100x600/150+200+0", "none"}), 0);
    ASSERT_TRUE(eventually([&] { return source->place()->x == 200; }));
    pauseFor(0.15);
    press(pad, 1, 300, 300);
    expectEventsOnMarks({Kind::down});
}

TEST_F(ClickPixelsTest, fallOnTheMarksInAnAreaAcrossMonitorsOfDifferentScales) {
    const ScopedEnvironment scales("QT_SCREEN_SCALE_FACTORS", "LEFT=1.5;RIGHT=2");
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "LEFT", "400/100x600/150+0+0", "screen"}), 0);
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "400/100x600/150+400+0", "none"}), 0);
    X11Application left({.pixels = {200, 200, 150, 150}}), right({.pixels = {450, 250, 150, 150}});
    const PixelRect area{101, 151, 601, 301};
    record({CaptureRequest::Area{area}});
    EXPECT_GT(engine->options().target.scale, 1);
    press(left, 1, 260, 291);
    pauseFor(0.1);
    press(right, 1, 511, 300);
    pauseFor(0.2);
    press(right, 6, 553, 377);
    expectEventsOnMarks({Kind::down, Kind::down, Kind::scroll});
}

} // namespace
} // namespace vantrell::testing
