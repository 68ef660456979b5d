// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/ScreenError.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/Stream/StreamRun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

StagedStreamFactory streams;

std::unique_ptr<X11CaptureBackend> openBackend() {
    auto backend = X11CaptureBackend::create();
    EXPECT_TRUE(backend) << backend.error().message;
    return std::move(*backend);
}

/// Waits by the clock, with the event loop running.
void runFor(double seconds) {
    const double until = hostNow() + seconds;
    eventually([until] { return hostNow() >= until; });
}

/// Paints numbered frames at a steady rate; returns the host time of each.
std::map<std::uint32_t, double> paintNumbers(X11Painter &painter, int count, double rate) {
    std::map<std::uint32_t, double> times;
    double next = hostNow();
    for (int i = 1; i <= count; ++i) {
        next += 1 / rate;
        eventually([next] { return hostNow() >= next; });
        painter.drawNumber(std::uint32_t(i), 32, 48);
        painter.sync();
        times[std::uint32_t(i)] = hostNow();
    }
    return times;
}

void expectNear(const MoviePicture::Colour &colour, const MoviePicture::Colour &wanted) {
    EXPECT_NEAR(colour.y, wanted.y, 2);
    EXPECT_NEAR(colour.cb, wanted.cb, 2);
    EXPECT_NEAR(colour.cr, wanted.cr, 2);
}

TEST(DisplayRecording, holdsAScreenThatNeverChangesUntilTheMomentOfTheStop) {
    const X11Session session;
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    runFor(1.3);
    const auto summary = run.stop();
    ASSERT_TRUE(summary) << summary.error().message;
    EXPECT_EQ(run.firstFrames(), 1);

    int pictures = 0;
    const double duration = forEachPicture(run.movie(), [&](const MoviePicture &) { ++pictures; });
    EXPECT_NEAR(duration, run.stoppedAt() - *run.firstFrame(), 0.020);
    EXPECT_NEAR(summary->durationSeconds, duration, 0.001);
    EXPECT_EQ(pictures, 2);
    EXPECT_EQ(summary->droppedFrames, 0);
}

TEST(DisplayRecording, showsTheRightColoursInTheRightPlaces) {
    const X11Session session;
    X11Painter painter;
    const std::vector<std::pair<std::uint32_t, MoviePicture::Colour>> bars{
        {0x000000, {16, 128, 128}}, {0xffffff, {235, 128, 128}}, {0x808080, {126, 128, 128}},
        {0xff0000, {63, 102, 240}}, {0x00ff00, {173, 42, 26}},   {0x0000ff, {32, 240, 118}},
        {0xff8000, {141, 60, 188}},
    };
    for (std::size_t i = 0; i < bars.size(); ++i)
        painter.fill({int(i) * 64, 100, 64, 100}, bars[i].first);
    painter.sync();

    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    ASSERT_TRUE(run.stop());
    bool isTagged = false;
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        isTagged = picture.isTaggedBt709;
        for (std::size_t i = 0; i < bars.size(); ++i) {
            SCOPED_TRACE(i);
            expectNear(picture.at(int(i) * 64 + 32, 150), bars[i].second);
        }
        expectNear(picture.at(600, 400), {16, 128, 128});
    });
    EXPECT_TRUE(isTagged);
}

TEST(DisplayRecording, capturesASourcesFramesAtTheirTimes) {
    const X11Session session;
    X11Painter painter;
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    const auto painted = paintNumbers(painter, 90, 30);
    const auto summary = run.stop();
    ASSERT_TRUE(summary);

    std::map<std::uint32_t, double> seen;
    double before = -1;
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        EXPECT_GT(picture.seconds, before);
        before = picture.seconds;
        if (const auto number =
                framecode::read(picture.luma + 48 * picture.lumaStride + 32, picture.lumaStride))
            seen.try_emplace(*number, picture.seconds);
    });
    // The machine may be busy with other things: frames may be lost, but none may be at a wrong time.
    EXPECT_GE(seen.size(), 60u);
    std::vector<double> errors;
    for (const auto &[number, time] : seen)
        errors.push_back(std::abs(time - (painted.at(number) - *run.firstFrame())));
    std::ranges::sort(errors);
    EXPECT_LT(errors[errors.size() / 2], 0.005);
}

TEST(DisplayRecording, keepsWhatIsNotDamagedAndTakesWhatIs) {
    const X11Session session;
    X11Painter painter;
    painter.fill({0, 0, 640, 480}, 0x808080);
    painter.sync();
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    for (int i = 0; i < 20; ++i) {
        painter.fill({i * 31, i * 23, 9, 7}, 0xffffff);
        painter.sync();
        runFor(0.02);
    }
    ASSERT_TRUE(run.stop());
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        if (picture.seconds < 0.6 && picture.isKey)
            return;
        EXPECT_NEAR(picture.at(639, 0).y, 126, 3);
        EXPECT_NEAR(picture.at(0, 479).y, 126, 3);
    });
    std::vector<int> spots;
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        spots.clear();
        for (int i = 0; i < 20; ++i)
            spots.push_back(picture.at(i * 31 + 4, i * 23 + 3).y);
    });
    for (const int spot : spots)
        EXPECT_NEAR(spot, 235, 6);
}

TEST(DisplayRecording, recordsOddSizesWhole) {
    const X11Session session;
    X11Painter painter;
    painter.fill({0, 0, 640, 480}, 0xffffff);
    painter.sync();
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {539, 427, 101, 53}));
    ASSERT_TRUE(run.start());
    ASSERT_TRUE(run.stop());
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        EXPECT_EQ(picture.width, 102);
        EXPECT_EQ(picture.height, 54);
        for (const auto &[x, y] : {std::pair(2, 2), {100, 52}, {101, 53}})
            EXPECT_NEAR(picture.at(x, y).y, 235, 2);
    });
}

TEST(DisplayRecording, drawsThePointerOnlyWhenAskedAndFollowsIt) {
    const X11Session session;
    X11Painter painter;
    painter.fill({0, 0, 640, 480}, 0x00ff00);
    painter.movePointer(100, 100);
    painter.sync();
    const auto backend = openBackend();
    for (const bool shows : {true, false}) {
        SCOPED_TRACE(shows);
        StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}),
                      shows ? CursorMode::inPicture : CursorMode::leftOut);
        ASSERT_TRUE(run.start());
        runFor(0.1);
        painter.movePointer(300, 300);
        painter.sync();
        runFor(0.5);
        ASSERT_TRUE(run.stop());
        const auto differs = [](const MoviePicture &picture, int x, int y) {
            int most = 0;
            for (int dy = -8; dy < 8; ++dy)
                for (int dx = -8; dx < 8; ++dx)
                    most = std::max(most, std::abs(picture.at(x + dx, y + dy).y - 173));
            return most > 40;
        };
        bool atFirst = false;
        bool atLast = false;
        bool oldPlaceAtLast = false;
        forEachPicture(run.movie(), [&](const MoviePicture &picture) {
            if (picture.ticks == 0)
                atFirst = differs(picture, 100, 100);
            atLast = differs(picture, 300, 300);
            oldPlaceAtLast = differs(picture, 100, 100);
        });
        EXPECT_EQ(atFirst, shows);
        EXPECT_EQ(atLast, shows);
        EXPECT_FALSE(oldPlaceAtLast);
        painter.movePointer(100, 100);
    }
}

TEST(DisplayRecording, followsTheShapeOfAPointerThatRests) {
    const X11Session session;
    X11Painter painter;
    painter.movePointer(300, 200);
    painter.sync();
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}), CursorMode::inPicture);
    ASSERT_TRUE(run.start());
    runFor(0.1);
    for (const std::uint16_t glyph : {30, 58, 90}) {
        painter.shapePointer(glyph);
        painter.sync();
        runFor(0.1);
    }
    ASSERT_TRUE(run.stop());
    int pictures = 0;
    forEachPicture(run.movie(), [&](const MoviePicture &) { ++pictures; });
    // The first one, one for each shape, and the one that is held.
    EXPECT_EQ(pictures, 5);
}

TEST(DisplayRecording, endsWhenTheDisplayIsUnpluggedAndShowsNoOtherInItsPlace) {
    const X11Session session;
    X11Painter painter;
    painter.fill({320, 0, 320, 480}, 0xffffff);
    painter.sync();
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "LEFT", "320/100x480/150+0+0", "screen"}), 0);
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "320/100x480/150+320+0", "none"}), 0);
    const auto backend = openBackend();
    // An area goes with the display that it lies on.
    for (const CaptureRequest &request : {CaptureRequest{CaptureRequest::WholeDisplay{"RIGHT"}},
                                          CaptureRequest{CaptureRequest::Area{{330, 10, 160, 160}}}}) {
        StreamRun run(streams, chosen(*backend, request));
        ASSERT_TRUE(run.start());
        runFor(0.1);
        ASSERT_EQ(session.run({"xrandr", "--delmonitor", "RIGHT"}), 0);
        painter.fill({320, 0, 320, 480}, 0x0000ff);
        painter.sync();
        const auto end = run.spontaneousEnd();
        ASSERT_TRUE(end);
        EXPECT_EQ(end->message, "The recorded display was disconnected");
        const auto summary = run.stop();
        ASSERT_TRUE(summary);
        forEachPicture(run.movie(), [&](const MoviePicture &picture) {
            EXPECT_NEAR(picture.at(100, 100).y, 235, 2) << picture.seconds;
        });
        ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "320/100x480/150+320+0", "none"}), 0);
        painter.fill({320, 0, 320, 480}, 0xffffff);
        painter.sync();
    }
}

TEST(DisplayRecording, goesOnWhenTheDesktopBecomesSmallerAndLargerAgain) {
    const X11Session session;
    X11Painter painter;
    painter.fill({0, 0, 640, 480}, 0xffffff);
    painter.sync();
    ASSERT_EQ(session.run({"xrandr", "--newmode", "small", "12", "320", "336", "368", "400", "240", "241",
                           "244", "250"}),
              0);
    ASSERT_EQ(session.run({"xrandr", "--addmode", "screen", "small"}), 0);
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    runFor(0.1);
    ASSERT_EQ(session.run({"xrandr", "--output", "screen", "--mode", "small"}), 0);
    painter.fill({0, 0, 320, 240}, 0x0000ff);
    painter.sync();
    runFor(0.2);
    ASSERT_TRUE(run.stop());
    MoviePicture::Colour inside{};
    MoviePicture::Colour outside{};
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        EXPECT_EQ(picture.width, 640);
        inside = picture.at(200, 200);
        outside = picture.at(500, 400);
    });
    expectNear(inside, {32, 240, 118});
    expectNear(outside, {16, 128, 128});
}

TEST(DisplayRecording, leavesNoDescriptorAndNoThreadBehindHoweverOftenItIsDone) {
    const X11Session session;
    X11Painter painter;
    const auto backend = openBackend();
    const auto count = [](const char *folder) {
        return std::distance(std::filesystem::directory_iterator(folder),
                             std::filesystem::directory_iterator());
    };
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;
    for (int i = 0; i < 25; ++i) {
        {
            StreamRun run(streams, chosenArea(*backend, {0, 0, 320, 240}));
            ASSERT_TRUE(run.start());
            painter.drawNumber(std::uint32_t(i), 0, 0);
            ASSERT_TRUE(run.stop());
        }
        if (i == 4) {
            descriptors = count("/proc/self/fd");
            threads = count("/proc/self/task");
        }
    }
    EXPECT_EQ(count("/proc/self/fd"), descriptors);
    EXPECT_LE(count("/proc/self/task"), threads);
}

TEST(DisplayRecording, keepsWhatWasRecordedWhenTheDisplayServerGoesAway) {
    X11Session session;
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    ASSERT_TRUE(run.start());
    runFor(0.5);
    session.kill();
    const auto end = run.spontaneousEnd();
    ASSERT_TRUE(end);
    EXPECT_TRUE(isScreenError(*end, ScreenErrorCode::connectionLost));
    const auto summary = run.stop();
    ASSERT_TRUE(summary);
    EXPECT_NEAR(forEachPicture(run.movie(), [](const MoviePicture &) {}), summary->durationSeconds, 0.01);
    EXPECT_GT(summary->durationSeconds, 0.4);
}

TEST(DisplayRecording, failsWithASentenceAndLeavesNothingBehind) {
    {
        const ScopedEnvironment noDisplay("DISPLAY", ":987");
        const auto backend = X11CaptureBackend::create();
        ASSERT_FALSE(backend);
        EXPECT_EQ(backend.error().message, "There is no display to record: no X server answers");
    }
    for (const std::string extension : {"DAMAGE", "MIT-SHM", "XFIXES"}) {
        SCOPED_TRACE(extension);
        X11Session::Options options;
        options.serverArguments = {"-extension", extension};
        const X11Session session(options);
        const auto backend = openBackend();
        StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
        const auto started = run.start();
        ASSERT_FALSE(started);
        EXPECT_TRUE(isScreenError(started.error(), ScreenErrorCode::missingExtension));
        EXPECT_NE(started.error().message.find(extension), std::string::npos) << started.error().message;
        EXPECT_TRUE(std::filesystem::is_empty(run.folder()));
    }
    const X11Session session;
    const auto backend = openBackend();
    StreamRun run(streams, chosenArea(*backend, {0, 0, 640, 480}));
    std::filesystem::remove(run.folder());
    EXPECT_FALSE(run.start());
}

} // namespace
} // namespace vantrell::testing
