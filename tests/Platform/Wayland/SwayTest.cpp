// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/Wayland/WaylandCaptureBackend.h"
#include "Platform/Wayland/WaylandDisplays.h"
#include "Platform/Wayland/WaylandScreenAccess.h"
#include "Platform/Wayland/WaylandStillCapture.h"
#include "Support/HostTime.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Stream/StreamRun.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <set>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

/// Where the scene's number stands on the display.
constexpr int codeX = 32;
constexpr int codeY = 48;

std::optional<std::uint32_t> numberAt(const MoviePicture &picture, int x, int y) {
    return framecode::read(picture.luma + y * picture.lumaStride + x, picture.lumaStride);
}

std::set<std::uint32_t> numbersOf(const std::filesystem::path &movie, int x = codeX, int y = codeY) {
    std::set<std::uint32_t> numbers;
    forEachPicture(movie, [&](const MoviePicture &picture) {
        if (const auto number = numberAt(picture, x, y))
            numbers.insert(*number);
    });
    return numbers;
}

std::optional<std::uint32_t> numberIn(const QImage &still, int x, int y) {
    const QImage grey = still.convertToFormat(QImage::Format_Grayscale8);
    return framecode::read(grey.constScanLine(y) + x, grey.bytesPerLine());
}

void let(std::chrono::milliseconds pass) {
    eventually([] { return false; }, pass);
}

TEST(Sway, tellsItsDisplaysWithTheirScale) {
    const SwaySession session({.width = 1280, .height = 720, .outputs = 2, .scale = 2});
    const auto displays = listWaylandDisplays();
    ASSERT_TRUE(displays);
    ASSERT_EQ(displays->size(), 2u);
    const Display &second = displays->back();
    EXPECT_EQ(second.id, "HEADLESS-2");
    EXPECT_EQ(second.scale, 2);
    EXPECT_EQ(second.frame, (Rect{640, 0, 640, 360}));
    EXPECT_EQ(second.pixels, (PixelRect{1280, 0, 1280, 720}));
    EXPECT_TRUE(displays->front().isPrimary);
}

TEST(Sway, isRecordedWholeInPartAndStill) {
    SwaySession session;
    session.showNumbers(20);
    WaylandCaptureBackend backend(session.bus().connection(), listWaylandDisplays);
    WaylandStillCapture stills(backend);
    StagedStreamFactory streams;
    // Nobody has agreed to anything yet.
    const auto first = runTask(stills.captureArea({10, 20, 500, 100}, {}));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->size(), QSize(500, 100));
    EXPECT_TRUE(numberIn(*first, codeX - 10, codeY - 20));

    {
        const auto whole = chosen(backend, {CaptureRequest::WholeDisplay{"HEADLESS-1"}});
        ASSERT_TRUE(whole);
        EXPECT_EQ(whole->facts().place, (PixelRect{0, 0, 1280, 720}));
        StreamRun run(streams, whole, CursorMode::inPicture);
        ASSERT_TRUE(run.start());
        let(1s);
        // Out of what is recorded: a second cast beside the first could hang the desktop's sender.
        const auto meanwhile = runTask(stills.captureArea({10, 20, 500, 100}, {}));
        ASSERT_TRUE(meanwhile);
        EXPECT_EQ(meanwhile->size(), QSize(500, 100));
        EXPECT_GT(numberIn(*meanwhile, codeX - 10, codeY - 20), numberIn(*first, codeX - 10, codeY - 20));
        let(1s);
        ASSERT_TRUE(run.stop());
        const auto numbers = numbersOf(run.movie());
        ASSERT_GT(numbers.size(), 2u);
    }

    // What was agreed to is not asked again.
    const auto second = runTask(stills.captureArea({10, 20, 500, 100}, {}));
    ASSERT_TRUE(second);
    EXPECT_TRUE(numberIn(*second, codeX - 10, codeY - 20));

    StreamRun part(streams, chosenArea(backend, {10, 20, 501, 99}));
    ASSERT_TRUE(part.start());
    let(500ms);
    ASSERT_TRUE(part.stop());
    EXPECT_FALSE(numbersOf(part.movie(), codeX - 10, codeY - 20).empty());
}

TEST(Sway, sharesItsScreenForAStillThatItFailsToMakeUnlessItsUserForbids) {
    SwaySession session({.failsAtStills = true});
    session.showNumbers(20);
    WaylandCaptureBackend backend(session.bus().connection(), listWaylandDisplays);
    WaylandStillCapture stills(backend);
    const auto keep = [&](std::vector<std::string> change) {
        const std::string store = "org.freedesktop.impl.portal.PermissionStore";
        std::vector<std::string> command{"gdbus",
                                         "call",
                                         "--session",
                                         "--dest",
                                         store,
                                         "--object-path",
                                         "/org/freedesktop/impl/portal/PermissionStore",
                                         "--method",
                                         store + "." + change.front()};
        command.insert(command.end(), change.begin() + 1, change.end());
        return ChildProcess(command, session.environment()).waitForExit();
    };
    ASSERT_EQ(keep({"SetPermission", "screenshot", "true", "screenshot", "", "['no']"}), 0);
    const auto forbidden = runTask(stills.captureArea({10, 20, 500, 100}, {}));
    ASSERT_FALSE(forbidden);
    EXPECT_TRUE(isPortalError(std::get<PlatformError>(forbidden.error()), PortalErrorCode::refused));

    ASSERT_EQ(keep({"Delete", "screenshot", "screenshot"}), 0);
    const auto still = runTask(stills.captureArea({10, 20, 500, 100}, {}));
    ASSERT_TRUE(still);
    EXPECT_TRUE(numberIn(*still, codeX - 10, codeY - 20));
}

TEST(Sway, isSeenUprightHoweverItsDisplayIsTurned) {
    SwaySession session;
    session.showNumbers(20);
    WaylandCaptureBackend backend(session.bus().connection(), listWaylandDisplays);
    StagedStreamFactory streams;
    for (const std::string turn : {"90", "270", "flipped-90", "180"}) {
        ASSERT_EQ(session.tell("output HEADLESS-1 transform " + turn), 0);
        StreamRun run(streams, chosenArea(backend, {10, 20, 500, 99}));
        ASSERT_TRUE(run.start());
        let(1s);
        ASSERT_TRUE(run.stop());
        EXPECT_FALSE(numbersOf(run.movie(), codeX - 10, codeY - 20).empty()) << turn;
    }
}

TEST(Sway, isRecordedAtOnceThoughNothingMoves) {
    const SwaySession session;
    WaylandCaptureBackend backend(session.bus().connection(), listWaylandDisplays);
    StagedStreamFactory streams;
    for (int recording = 0; recording < 3; ++recording) {
        StreamRun run(streams, chosen(backend, {CaptureRequest::WholeDisplay{}}));
        ASSERT_TRUE(run.start());
        let(300ms);
        ASSERT_TRUE(run.stop());
        int pictures = 0;
        forEachPicture(run.movie(), [&](const MoviePicture &) { ++pictures; });
        EXPECT_GT(pictures, 0) << recording;
    }
}

TEST(Sway, isWaitedForWhileItsUserChoosesAndGivenUpWhenItHangs) {
    // Longer than a portal may take for anything else.
    SwaySession session({.choiceSeconds = 11});
    WaylandCaptureBackend backend(session.bus().connection(), listWaylandDisplays);
    EXPECT_TRUE(chosen(backend, {CaptureRequest::WholeDisplay{}}));

    const double asked = hostNow();
    session.ground().signalPortal(SIGSTOP);
    const auto again = runTask(backend.choose({CaptureRequest::WholeDisplay{}}, {}));
    ASSERT_FALSE(again);
    EXPECT_EQ(std::get<PlatformError>(again.error()), portalError(PortalErrorCode::silent));
    session.ground().signalPortal(SIGCONT);
    session.freezeBackend();
    EXPECT_FALSE(runTask(WaylandStillCapture(backend).captureArea({10, 20, 500, 100}, {})));
    EXPECT_LT(hostNow() - asked, 18);
}

TEST(Sway, saysWhatIsMissingForRecordings) {
    PortalGround ground;
    WaylandScreenAccess access(ground.bus().connection(), "Sway");
    EXPECT_TRUE(eventually([&] { return !access.isGranted(); }));
    EXPECT_THAT(access.whatToDo(), ::testing::HasSubstr("Install xdg-desktop-portal"));
    const SwaySession session;
    WaylandScreenAccess there(session.bus().connection(), "Sway");
    EXPECT_TRUE(there.isGranted());
    let(300ms);
    EXPECT_TRUE(there.isGranted());
    EXPECT_EQ(there.whatToDo(), "");
}

} // namespace

} // namespace vantrell::testing
