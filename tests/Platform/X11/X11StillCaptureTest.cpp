// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11StillCapture.h"

#include "Platform/ScreenError.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"

#include <QSize>

#include <gtest/gtest.h>

#include <set>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

class X11StillCaptureTest : public ::testing::Test {
protected:
    QImage window(const X11Application &application) {
        const auto still = runTask(stills.captureWindow(application.window(), {}));
        EXPECT_TRUE(still) << std::get<PlatformError>(still.error()).message;
        return still.value_or(QImage());
    }
    QImage area(const PixelRect &pixels) {
        const auto still = runTask(stills.captureArea(pixels, {}));
        EXPECT_TRUE(still) << std::get<PlatformError>(still.error()).message;
        return still.value_or(QImage());
    }
    static PlatformError error(const StillCapture::Result &still) {
        return still ? PlatformError{} : std::get<PlatformError>(still.error());
    }
    /// Every colour that is in the picture, as ARGB without premultiplication.
    static std::set<QRgb> colours(const QImage &image) {
        std::set<QRgb> colours;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                colours.insert(image.pixelColor(x, y).rgba());
        }
        return colours;
    }

    X11StillCapture stills;
};

TEST_F(X11StillCaptureTest, keepsAWindowsTransparency) {
    for (const bool managed : {false, true}) {
        const X11Session session({.windowManager = managed});
        // Half covering red, premultiplied.
        X11Application pad({.hasAlpha = true, .colour = 0x80800000});
        const QImage still = window(pad);
        EXPECT_EQ(still.size(), QSize(200, 150));
        EXPECT_TRUE(still.hasAlphaChannel());
        EXPECT_EQ(colours(still), std::set<QRgb>{qRgba(255, 0, 0, 128)}) << "managed: " << managed;
    }
}

TEST_F(X11StillCaptureTest, showsAWindowWholeWhereOthersCoverIt) {
    for (const bool managed : {false, true}) {
        const X11Session session({.windowManager = managed});
        X11Application pad({.colour = 0x3070b0, .slowness = 20ms});
        X11Application cover({.pixels = {100, 60, 300, 300}, .colour = 0xff0000});
        X11Application menu({.pixels = {60, 50, 30, 30}, .colour = 0x00ff00, .overridesRedirect = true});
        const QImage still = window(pad);
        EXPECT_EQ(still.size(), QSize(200, 150));
        EXPECT_EQ(colours(still), std::set<QRgb>{qRgb(0x30, 0x70, 0xb0)}) << "managed: " << managed;
        EXPECT_FALSE(still.hasAlphaChannel());
    }
}

TEST_F(X11StillCaptureTest, showsAWindowThatReachesBeyondTheScreen) {
    const X11Session session;
    X11Application pad({.pixels = {-60, 400, 200, 150}});
    const QImage still = window(pad);
    EXPECT_EQ(still.size(), QSize(200, 150));
    EXPECT_EQ(colours(still), std::set<QRgb>{qRgb(0x30, 0x70, 0xb0)});
}

TEST_F(X11StillCaptureTest, cutsOffTheShadowTheBorderAndWhatIsNotInTheShape) {
    const X11Session session;
    X11Application pad({.pixels = {50, 40, 200, 150}, .borderWidth = 7});
    EXPECT_EQ(window(pad).size(), QSize(200, 150));
    EXPECT_EQ(colours(window(pad)), std::set<QRgb>{qRgb(0x30, 0x70, 0xb0)});
    pad.setNumbers("_GTK_FRAME_EXTENTS", "CARDINAL", {10, 20, 5, 15});
    EXPECT_EQ(window(pad).size(), QSize(170, 130));

    pad.cutShape({0, 0, 100, 150});
    const QImage still = window(pad);
    EXPECT_EQ(still.size(), QSize(170, 130));
    EXPECT_EQ(still.pixel(89, 60), qRgb(0x30, 0x70, 0xb0));
    EXPECT_EQ(still.pixel(90, 60), qRgba(0, 0, 0, 0));
}

TEST_F(X11StillCaptureTest, takesAnAreaAcrossTwoMonitorsWithoutThePointer) {
    const X11Session session;
    // The right one is lower: below it nobody sees anything.
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "LEFT", "320/90x480/130+0+0", "screen"}), 0);
    ASSERT_EQ(session.run({"xrandr", "--setmonitor", "RIGHT", "320/90x300/80+320+0", "none"}), 0);
    X11Painter painter;
    painter.fill({0, 0, 320, 480}, 0x102030);
    painter.fill({320, 0, 320, 480}, 0xf0e0d0);
    painter.movePointer(310, 250);
    painter.sync();

    const QImage still = area({300, 200, 40, 200});
    EXPECT_EQ(still.size(), QSize(40, 200));
    EXPECT_EQ(colours(still.copy(0, 0, 20, 200)), std::set<QRgb>{qRgb(0x10, 0x20, 0x30)});
    EXPECT_EQ(colours(still.copy(20, 0, 20, 100)), std::set<QRgb>{qRgb(0xf0, 0xe0, 0xd0)});
    EXPECT_EQ(colours(still.copy(20, 100, 20, 100)), std::set<QRgb>{qRgb(0, 0, 0)});
    EXPECT_EQ(area({600, -20, 100, 60}).size(), QSize(40, 40));
}

TEST_F(X11StillCaptureTest, refusesWhatIsNotThere) {
    const X11Session session;
    EXPECT_EQ(error(runTask(stills.captureArea({0, 0, 10, 0}, {}))),
              screenError(ScreenErrorCode::badArea, "The area is smaller than a pixel"));
    EXPECT_EQ(error(runTask(stills.captureArea({640, 0, 10, 10}, {}))),
              screenError(ScreenErrorCode::badArea, "The area lies outside every display"));
    EXPECT_EQ(error(runTask(stills.captureWindow(12345, {}))),
              screenError(ScreenErrorCode::noSuchWindow, "There is no window 12345"));
    X11Application pad;
    pad.unmap();
    EXPECT_TRUE(
        isScreenError(error(runTask(stills.captureWindow(pad.window(), {}))), ScreenErrorCode::noSuchWindow));
}

TEST_F(X11StillCaptureTest, saysWhichExtensionIsMissing) {
    const X11Session session({.serverArguments = {"-extension", "COMPOSITE"}});
    X11Application pad;
    EXPECT_EQ(error(runTask(stills.captureWindow(pad.window(), {}))).message,
              "The display server lacks the extension Composite");
}

TEST_F(X11StillCaptureTest, saysThatAWindowWasClosedInTheMiddle) {
    const X11Session session;
    X11Application pad({.slowness = 20ms});
    X11Application cover({.pixels = {100, 60, 300, 300}});
    const auto closed =
        runTask([](X11StillCapture *with, X11Application *application) -> Task<StillCapture::Result> {
            auto capture = with->captureWindow(application->window(), {});
            // It is asked for the part that was covered: the capture is under way.
            eventually([&] { return application->repaints() > 1; });
            application->close();
            co_return co_await std::move(capture);
        }(&stills, &pad));
    EXPECT_EQ(error(closed),
              screenError(ScreenErrorCode::windowClosed, "The window was closed before it was captured"));
}

TEST_F(X11StillCaptureTest, canBeCancelled) {
    const X11Session session;
    X11Application pad;
    std::stop_source stop;
    auto capture = stills.captureWindow(pad.window(), stop.get_token());
    stop.request_stop();
    const auto still = runTask(std::move(capture));
    ASSERT_FALSE(still);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(still.error()));
}

} // namespace
} // namespace vantrell::testing
