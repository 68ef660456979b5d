// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/ScreenError.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Stream/StreamRun.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace vantrell::testing {

namespace {

constexpr std::uint32_t blue = 0x0000ff;
constexpr int blueLuma = 32;
constexpr int whiteLuma = 235;
constexpr int blackLuma = 16;

StagedStreamFactory windowStreams;

class WindowRecording : public ::testing::Test {
protected:
    WindowRecording() {
        auto created = X11CaptureBackend::create();
        backend = std::move(*created);
    }

    std::shared_ptr<CaptureSource> source() { return chosen(*backend, {CaptureRequest::Window{window}}); }

    void pause() {
        const double until = hostNow() + 0.15;
        eventually([until] { return hostNow() >= until; });
    }

    /// Luma at a place of the movie's last picture.
    struct LastPicture {
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> luma;
        int at(int x, int y) const { return luma[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
    };
    LastPicture lastPicture(const StreamRun &run) {
        LastPicture last;
        forEachPicture(run.movie(), [&](const MoviePicture &picture) {
            last.width = picture.width;
            last.height = picture.height;
            last.luma.resize(std::size_t(picture.width) * std::size_t(picture.height));
            for (int y = 0; y < picture.height; ++y)
                std::memcpy(last.luma.data() + std::ptrdiff_t(y) * picture.width,
                            picture.luma + y * picture.lumaStride, std::size_t(picture.width));
        });
        return last;
    }

    X11Session session;
    X11Painter painter;
    X11Painter other;
    xcb_window_t window = painter.openWindow({100, 80, 200, 120}, "subject", false);
    std::unique_ptr<X11CaptureBackend> backend;
};

TEST_F(WindowRecording, showsItsOwnContentWhileItIsCoveredAndMoved) {
    painter.fill({0, 0, 200, 120}, 0xffffff);
    painter.sync();
    StreamRun run(windowStreams, source());
    ASSERT_TRUE(run.start());
    other.openWindow({0, 0, 640, 480}, "cover");
    other.fill({0, 0, 640, 480}, 0xff0000);
    other.sync();
    pause();
    painter.moveResize({150, 200, 200, 120});
    painter.fill({50, 40, 20, 20}, blue);
    painter.sync();
    pause();
    ASSERT_TRUE(run.stop());
    const auto last = lastPicture(run);
    EXPECT_EQ(last.width, 200);
    EXPECT_EQ(last.height, 120);
    EXPECT_NEAR(last.at(60, 50), blueLuma, 4);
    EXPECT_NEAR(last.at(10, 10), whiteLuma, 4);
    EXPECT_NEAR(last.at(190, 110), whiteLuma, 4);
}

TEST_F(WindowRecording, keepsTheMoviesSizeAndFitsTheWindowIntoItWhenItIsResized) {
    painter.fill({0, 0, 200, 120}, 0xffffff);
    painter.sync();
    StreamRun run(windowStreams, source());
    ASSERT_TRUE(run.start());
    painter.moveResize({20, 20, 400, 400});
    painter.fill({0, 0, 400, 400}, 0xffffff);
    painter.fill({0, 0, 400, 200}, blue);
    painter.sync();
    pause();
    ASSERT_TRUE(run.stop());
    const auto last = lastPicture(run);
    EXPECT_EQ(last.width, 200);
    EXPECT_EQ(last.height, 120);
    // A square in the middle, 120 wide, black at both sides.
    EXPECT_NEAR(last.at(20, 60), blackLuma, 4);
    EXPECT_NEAR(last.at(180, 60), blackLuma, 4);
    EXPECT_NEAR(last.at(100, 30), blueLuma, 4);
    EXPECT_NEAR(last.at(100, 90), whiteLuma, 4);
}

TEST_F(WindowRecording, doesNotFreezeWhenTheWindowGetsNarrowerAndTallerAndThenIsAsBefore) {
    StreamRun run(windowStreams, source());
    ASSERT_TRUE(run.start());
    pause();
    for (const PixelRect &place : {PixelRect{100, 80, 60, 200}, PixelRect{100, 80, 200, 120}}) {
        painter.moveResize(place);
        painter.fill({0, 0, 200, 200}, 0xffffff);
        painter.sync();
        pause();
    }
    painter.fill({0, 0, 200, 120}, blue);
    painter.sync();
    pause();
    ASSERT_TRUE(run.stop());
    EXPECT_NEAR(lastPicture(run).at(100, 60), blueLuma, 4);
    EXPECT_NEAR(lastPicture(run).at(5, 115), blueLuma, 4);
}

TEST_F(WindowRecording, keepsTheLastPictureWhileItIsNotShownAndGoesOnAfterwards) {
    painter.fill({0, 0, 200, 120}, 0xffffff);
    painter.sync();
    StreamRun run(windowStreams, source());
    ASSERT_TRUE(run.start());
    pause();
    xcb_unmap_window(painter.xcb(), window);
    painter.sync();
    pause();
    xcb_map_window(painter.xcb(), window);
    painter.fill({0, 0, 200, 120}, blue);
    painter.sync();
    pause();
    ASSERT_TRUE(run.stop());
    bool wasBlackInBetween = false;
    forEachPicture(run.movie(), [&](const MoviePicture &shown) {
        if (shown.seconds < 0.25 && shown.at(100, 60).y < 30)
            wasBlackInBetween = true;
    });
    EXPECT_FALSE(wasBlackInBetween);
    EXPECT_NEAR(lastPicture(run).at(100, 60), blueLuma, 4);
}

TEST_F(WindowRecording, endsAndKeepsWhatWasRecordedWhenTheWindowCloses) {
    painter.fill({0, 0, 200, 120}, 0xffffff);
    painter.sync();
    StreamRun run(windowStreams, source());
    ASSERT_TRUE(run.start());
    pause();
    painter.closeWindow();
    const auto end = run.spontaneousEnd();
    ASSERT_TRUE(end);
    EXPECT_TRUE(isScreenError(*end, ScreenErrorCode::windowClosed));
    ASSERT_TRUE(run.stop());
    EXPECT_NEAR(lastPicture(run).at(100, 60), whiteLuma, 4);
}

TEST_F(WindowRecording, drawsThePointerWhereItIsOnTheWindow) {
    painter.fill({0, 0, 200, 120}, 0xffffff);
    painter.movePointer(100 + 50, 80 + 60);
    painter.sync();
    StreamRun run(windowStreams, source(), CursorMode::inPicture);
    ASSERT_TRUE(run.start());
    ASSERT_TRUE(run.stop());
    const auto last = lastPicture(run);
    int darkest = 255;
    for (int y = 52; y < 68; ++y)
        for (int x = 42; x < 58; ++x)
            darkest = std::min(darkest, last.at(x, y));
    EXPECT_LT(darkest, 100);
    EXPECT_NEAR(last.at(150, 100), whiteLuma, 4);
}

TEST_F(WindowRecording, refusesAWindowThatIsGone) {
    const auto gone = source();
    painter.closeWindow();
    StreamRun run(windowStreams, gone);
    const auto started = run.start();
    ASSERT_FALSE(started);
    EXPECT_TRUE(isScreenError(started.error(), ScreenErrorCode::noSuchWindow));
    EXPECT_TRUE(std::filesystem::is_empty(run.folder()));
    EXPECT_FALSE(source());
}

TEST(WindowRecordingWithoutComposite, saysWhichExtensionIsMissing) {
    X11Session::Options options;
    options.serverArguments = {"-extension", "Composite"};
    const X11Session session(options);
    X11Painter painter;
    const auto backend = X11CaptureBackend::create();
    ASSERT_TRUE(backend);
    const auto window = painter.openWindow({0, 0, 100, 100}, "subject", false);
    StreamRun run(windowStreams, chosen(**backend, {CaptureRequest::Window{window}}));
    const auto started = run.start();
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().message, "The display server lacks the extension Composite");
}

} // namespace
} // namespace vantrell::testing
