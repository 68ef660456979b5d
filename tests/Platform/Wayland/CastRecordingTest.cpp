// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/ScreenError.h"
#include "Platform/Wayland/WaylandCaptureBackend.h"
#include "Platform/Wayland/WaylandStillCapture.h"
#include "Support/HostTime.h"
#include "Support/TaskScope.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Stream/StreamRun.h"
#include "TestSupport/Wayland/CastScreen.h"
#include "TestSupport/Wayland/PortalDouble.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

using Ask = CaptureRequest::LetDesktopAsk;

const CaptureRequest wholeDisplay{CaptureRequest::WholeDisplay{}};
const CaptureRequest someWindow{Ask{Ask::Kind::window, {}}};

std::vector<Display> twoDisplays() {
    Display left{"LEFT", "LEFT", {0, 0, 640, 480}, {0, 0, 640, 480}, 1, true};
    Display right{"RIGHT", "RIGHT", {640, 0, 640, 480}, {640, 0, 640, 480}, 1, false};
    return {left, right};
}

/// The real portal before a scripted desktop that shares a screen of ours.
class CastRecording : public ::testing::Test {
protected:
    explicit CastRecording(const CastScreen::Options &options = {}) : m_screen(options) {
        m_desktop.script.node = m_screen.node();
    }

    std::unique_ptr<WaylandCaptureBackend> openBackend() {
        return std::make_unique<WaylandCaptureBackend>(
            m_ground.bus().connection(),
            [this]() -> std::expected<std::vector<Display>, PlatformError> { return m_displays; });
    }

    /// What a request comes to; a failure is shown.
    static std::shared_ptr<CaptureSource> share(WaylandCaptureBackend &backend,
                                                const CaptureRequest &request) {
        auto choice = runTask(backend.choose(request, {}));
        if (choice)
            return std::move(choice->source);
        const auto *error = std::get_if<PlatformError>(&choice.error());
        ADD_FAILURE() << (error ? error->description() : "cancelled");
        return nullptr;
    }

    static std::string failure(WaylandCaptureBackend &backend, const CaptureRequest &request) {
        const auto choice = runTask(backend.choose(request, {}));
        if (choice)
            return "none";
        const auto *error = std::get_if<PlatformError>(&choice.error());
        return error ? error->description() : "cancelled";
    }

    /// It asks the desktop only once what it can.
    void restartPortal() {
        m_ground.killPortal();
        m_desktop.startPortal();
    }

    /// Shows numbers at a steady rate and waits until each is told of.
    void showNumbers(int first, int last, double rate) {
        double next = hostNow();
        for (int number = first; number <= last; ++number) {
            next += 1 / rate;
            eventually([next] { return hostNow() >= next; });
            m_screen.show(std::uint32_t(number));
        }
        EXPECT_TRUE(eventually([&] { return m_screen.sentAt(std::uint32_t(last)) > 0; }));
        // A picture that comes after the stop is not in the movie.
        eventually([] { return false; }, 300ms);
    }

    /// Has the desktop asked for the display and stops before it has answered.
    void stopWhileAsking(WaylandCaptureBackend &backend);
    /// Records until `end` ends it.
    void expectKept(WaylandCaptureBackend &backend, const std::function<void()> &end, ScreenErrorCode code);

    PortalGround m_ground;
    CastScreen m_screen;
    PortalDouble m_desktop{m_ground, {}};
    std::vector<Display> m_displays{twoDisplays().front()};
    StagedStreamFactory m_streams;
};

/// The number in each picture of a movie, in order, each once, and when it was shown.
std::vector<std::pair<std::uint32_t, double>>
numbersIn(const std::filesystem::path &movie, int x = CastScreen::numberX, int y = CastScreen::numberY) {
    std::vector<std::pair<std::uint32_t, double>> numbers;
    forEachPicture(movie, [&](const MoviePicture &picture) {
        const auto number = framecode::read(picture.luma + y * picture.lumaStride + x, picture.lumaStride);
        if (number && (numbers.empty() || numbers.back().first != *number))
            numbers.emplace_back(*number, picture.seconds);
    });
    return numbers;
}

std::uint32_t lastNumber(const std::filesystem::path &movie) {
    const auto numbers = numbersIn(movie);
    return numbers.empty() ? 0 : numbers.back().first;
}

void CastRecording::stopWhileAsking(WaylandCaptureBackend &backend) {
    std::stop_source stop;
    bool isCancelled = false;
    TaskScope scope;
    scope.start(
        [](WaylandCaptureBackend *from, std::stop_token given, bool *cancelled, std::stop_token) -> Task<> {
            const auto choice = co_await from->choose(wholeDisplay, given);
            *cancelled = !choice && std::holds_alternative<Cancelled>(choice.error());
        },
        &backend, stop.get_token(), &isCancelled);
    ASSERT_TRUE(eventually([this] { return m_desktop.isAsking() || m_desktop.held() > 0; }));
    stop.request_stop();
    EXPECT_TRUE(isCancelled);
}

void CastRecording::expectKept(WaylandCaptureBackend &backend, const std::function<void()> &end,
                               ScreenErrorCode code) {
    const auto runSource = share(backend, wholeDisplay);
    ASSERT_TRUE(runSource);
    StreamRun run(m_streams, runSource);
    ASSERT_TRUE(run.start());
    showNumbers(1, 10, 30);
    eventually([] { return false; }, 500ms);
    end();
    const auto why = run.spontaneousEnd();
    ASSERT_TRUE(why);
    EXPECT_TRUE(isScreenError(*why, code)) << why->message;
    ASSERT_TRUE(run.stop());
    EXPECT_GE(lastNumber(run.movie()), 5u);
}

void expectColour(const std::filesystem::path &movie, int x, int y, const MoviePicture::Colour &wanted) {
    int pictures = 0;
    forEachPicture(movie, [&](const MoviePicture &picture) {
        ++pictures;
        const auto colour = picture.at(x, y);
        EXPECT_NEAR(colour.y, wanted.y, 2);
        EXPECT_NEAR(colour.cb, wanted.cb, 2);
        EXPECT_NEAR(colour.cr, wanted.cr, 2);
    });
    EXPECT_GT(pictures, 0);
}

/// Of CastScreen::ground.
constexpr MoviePicture::Colour groundColour{93, 154, 105};

TEST_F(CastRecording, hasEveryPictureAtItsTime) {
    const auto backend = openBackend();
    const auto runSource = share(*backend, wholeDisplay);
    ASSERT_TRUE(runSource);
    StreamRun run(m_streams, runSource);
    ASSERT_TRUE(run.start());
    showNumbers(1, 60, 30);
    ASSERT_TRUE(run.stop());

    std::map<std::uint32_t, double> seen;
    for (const auto &[number, seconds] : numbersIn(run.movie()))
        seen.emplace(number, seconds);
    // How many there are is the machine's business: the newest one wins.
    EXPECT_GE(seen.size(), 4u);
    for (const auto &[number, seconds] : seen) {
        if (number > 0 && m_screen.sentAt(number) > *run.firstFrame())
            EXPECT_NEAR(seconds, m_screen.sentAt(number) - *run.firstFrame(), 0.002) << number;
    }
    expectColour(run.movie(), 600, 400, groundColour);
}

TEST_F(CastRecording, goesOnAfterAPauseWithoutAskingAgainAlsoWhenNothingMoves) {
    const auto backend = openBackend();
    const auto source = share(*backend, wholeDisplay);
    ASSERT_TRUE(source);
    for (const std::uint32_t number : {7u, 9u}) {
        StreamRun run(m_streams, source);
        ASSERT_TRUE(run.start());
        m_screen.show(number);
        EXPECT_TRUE(eventually([this] { return m_screen.isWatched(); }));
        eventually([] { return false; }, 300ms);
        ASSERT_TRUE(run.stop());
        const auto numbers = numbersIn(run.movie());
        ASSERT_FALSE(numbers.empty());
        EXPECT_EQ(numbers.back().first, number);
    }
    // Nobody is made to draw for nobody.
    EXPECT_TRUE(eventually([this] { return !m_screen.isWatched(); }));
    StreamRun still(m_streams, source);
    ASSERT_TRUE(still.start());
    ASSERT_TRUE(still.stop());
    EXPECT_EQ(lastNumber(still.movie()), 9u);
    EXPECT_EQ(m_desktop.dialogs(), 1);
}

TEST_F(CastRecording, asksOnceForEachDisplay) {
    {
        const auto backend = openBackend();
        ASSERT_TRUE(share(*backend, wholeDisplay));
    }
    EXPECT_TRUE(eventually([this] { return m_desktop.sessions() == 0; }));
    // Another run of the program.
    const auto backend = openBackend();
    ASSERT_TRUE(share(*backend, wholeDisplay));
    EXPECT_EQ(m_desktop.dialogs(), 1);

    m_displays = twoDisplays();
    m_desktop.script.place = {640, 0, 640, 480};
    auto shared = share(*backend, {CaptureRequest::WholeDisplay{"RIGHT"}});
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->facts().display->id, "RIGHT");
    EXPECT_EQ(m_desktop.dialogs(), 2);
    shared.reset();
    // What is remembered for the left one is another display now: it is asked for anew, and the answer
    // counts.
    shared = share(*backend, {CaptureRequest::WholeDisplay{"LEFT"}});
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->facts().display->id, "RIGHT");
    shared.reset();
    EXPECT_EQ(m_desktop.dialogs(), 3);
    EXPECT_EQ(failure(*backend, {CaptureRequest::Area{{10, 10, 100, 100}}}),
              "The area is on LEFT: choose that display when the desktop asks");
    // Portals that are told no places say that each is in the corner: what was chosen is believed.
    for (Display &each : m_displays)
        each.isPlaceShared = false;
    m_desktop.script.place = {0, 0, 640, 480};
    shared = share(*backend, {CaptureRequest::Area{{650, 10, 100, 100}}});
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->facts().display->id, "RIGHT");
}

TEST_F(CastRecording, cutsAnAreaOutOfItsDisplay) {
    const auto backend = openBackend();
    // The number is where it is in the picture: the corner lies on no block.
    const auto runSource = share(*backend, {CaptureRequest::Area{{21, 37, 443, 211}}});
    ASSERT_TRUE(runSource);
    StreamRun run(m_streams, runSource);
    ASSERT_TRUE(run.start());
    showNumbers(1, 10, 20);
    ASSERT_TRUE(run.stop());
    const auto numbers = numbersIn(run.movie(), CastScreen::numberX - 21, CastScreen::numberY - 37);
    ASSERT_FALSE(numbers.empty());
    EXPECT_EQ(numbers.back().first, 10u);
}

TEST_F(CastRecording, drawsAPointerThatComesApartOrTellsWhereItIs) {
    // Only apart, or not at all.
    m_desktop.script.cursorModes = 5;
    restartPortal();
    const auto backend = openBackend();
    CaptureRequest separate = wholeDisplay;
    separate.separatesPointer = true;
    {
        const auto drawnSource = share(*backend, wholeDisplay);
        ASSERT_TRUE(drawnSource);
        StreamRun drawn(m_streams, drawnSource, CursorMode::inPicture);
        ASSERT_TRUE(drawn.start());
        m_screen.movePointer(100, 200);
        eventually([] { return false; }, 200ms);
        m_screen.movePointer(321, 300);
        eventually([] { return false; }, 200ms);
        ASSERT_TRUE(drawn.stop());
        MoviePicture::Colour before{};
        MoviePicture::Colour at{};
        forEachPicture(drawn.movie(), [&](const MoviePicture &picture) {
            before = picture.at(100, 200);
            at = picture.at(321, 300);
        });
        EXPECT_NEAR(at.y, 16, 3);
        EXPECT_NEAR(before.y, groundColour.y, 3);
        EXPECT_TRUE(drawn.pointers().empty());
    }
    {
        const auto toldSource = share(*backend, separate);
        ASSERT_TRUE(toldSource);
        StreamRun told(m_streams, toldSource, CursorMode::asMetadata);
        ASSERT_TRUE(told.start());
        m_screen.movePointer(160, 240);
        EXPECT_TRUE(eventually([&] {
            const auto pointers = told.pointers();
            return !pointers.empty() && pointers.back() == Point{0.25, 0.5};
        }));
        ASSERT_TRUE(told.stop());
        expectColour(told.movie(), 160, 240, groundColour);
    }

    // Where it cannot be had apart it is drawn, and nobody says otherwise.
    m_desktop.script.cursorModes = 3;
    restartPortal();
    const auto embedded = share(*backend, separate);
    ASSERT_TRUE(embedded);
    EXPECT_FALSE(embedded->separatesPointer());
    EXPECT_EQ(m_desktop.selections().back().value("cursor_mode").toUInt(), 2u);
}

TEST_F(CastRecording, fitsAScreenThatChangesItsSize) {
    const auto backend = openBackend();
    const auto runSource = share(*backend, wholeDisplay);
    ASSERT_TRUE(runSource);
    StreamRun run(m_streams, runSource);
    ASSERT_TRUE(run.start());
    m_screen.show(1);
    eventually([] { return false; }, 200ms);
    m_screen.resize({.buffer = {1280, 960}});
    showNumbers(2, 2, 2);
    eventually([] { return false; }, 1500ms);
    m_screen.resize({});
    eventually([] { return false; }, 1500ms);
    m_screen.show(5);
    eventually([] { return false; }, 300ms);
    ASSERT_TRUE(run.stop());
    EXPECT_EQ(lastNumber(run.movie()), 5u);
    int halved = 0;
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        EXPECT_EQ(picture.width, 640);
        // The number at half its size: its place is half of where it was.
        halved += picture.at(CastScreen::numberX / 2 + 4, 2 + CastScreen::numberY / 2).y != groundColour.y &&
                  std::abs(picture.at(400, 48 + 8).y - groundColour.y) < 4;
    });
    EXPECT_GT(halved, 0);
}

TEST_F(CastRecording, saysWhyNothingIsShared) {
    const auto backend = openBackend();
    m_desktop.script.response = 1;
    EXPECT_EQ(failure(*backend, wholeDisplay), "The desktop refused to share the screen without asking. Its "
                                               "dialog may be missing (on sway: install slurp)");
    // As a person does.
    m_desktop.script.isSlow = true;
    double shown = 0;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, &user, [&] {
        if (m_desktop.isAsking() && shown == 0)
            shown = hostNow();
        if (shown > 0 && hostNow() - shown > 0.4)
            m_desktop.answer();
    });
    user.start(20ms);
    EXPECT_EQ(failure(*backend, wholeDisplay), "cancelled");
    m_desktop.script.isSlow = false;
    m_desktop.script.response = 2;
    EXPECT_EQ(failure(*backend, wholeDisplay), "The desktop refused it");
    m_desktop.script.response = 0;
    m_desktop.script.sourceTypes = 1;
    m_ground.killPortal();
    EXPECT_EQ(
        failure(*backend, wholeDisplay),
        "The desktop's portal is missing: install xdg-desktop-portal and the part of it for this desktop, "
        "then log in again");
    m_desktop.startPortal();
    EXPECT_EQ(failure(*backend, someWindow), "This desktop shares whole displays only, no single windows");
    m_screen.close();
    EXPECT_EQ(failure(*backend, wholeDisplay), "The desktop sends no picture of what was chosen");
    EXPECT_TRUE(eventually([this] { return m_desktop.sessions() == 0; }));
}

TEST_F(CastRecording, takesItsQuestionBackWhenNobodyWaitsForTheAnswer) {
    m_desktop.script.isSlow = true;
    const auto backend = openBackend();
    stopWhileAsking(*backend);
    EXPECT_TRUE(eventually([this] { return !m_desktop.isAsking() && m_desktop.sessions() == 0; }));

    // One that hung opens what was asked for when it comes to itself.
    const int opened = m_desktop.opened();
    m_desktop.script.hangs = true;
    stopWhileAsking(*backend);
    m_desktop.awake();
    EXPECT_TRUE(eventually([&] { return m_desktop.opened() == opened + 1 && m_desktop.sessions() == 0; }));

    // A desktop whose PipeWire hangs or has gone may never answer.
    for (const auto harm : {&PortalGround::freezePipeWire, &PortalGround::killPipeWire}) {
        QTimer harming;
        QObject::connect(&harming, &QTimer::timeout, &harming, [&] {
            if (m_desktop.isAsking())
                (m_ground.*harm)();
        });
        harming.start(50);
        EXPECT_EQ(failure(*backend, wholeDisplay), "PipeWire, which carries the screen, cannot be reached");
        EXPECT_TRUE(eventually([this] { return !m_desktop.isAsking(); }));
    }
}

TEST_F(CastRecording, asksNotAgainBecauseAStartWasStopped) {
    const auto backend = openBackend();
    ASSERT_TRUE(share(*backend, wholeDisplay));
    m_desktop.script.isSlow = true;
    stopWhileAsking(*backend);
    // What was agreed to is used up by now: the answer brings what the next start needs.
    EXPECT_TRUE(m_desktop.isAsking());
    m_desktop.script.isSlow = false;
    m_desktop.answer();
    runTask(backend->settled({}));
    EXPECT_TRUE(eventually([this] { return m_desktop.sessions() == 0; }));
    EXPECT_TRUE(share(*backend, wholeDisplay));
    EXPECT_EQ(m_desktop.dialogs(), 1);

    // A desktop that asks all the same does not ask for long, nor for ever while a program ends.
    m_desktop.script.isSlow = true;
    stopWhileAsking(*backend);
    runTask(backend->settled({}));
    EXPECT_TRUE(eventually([this] { return !m_desktop.isAsking() && m_desktop.sessions() == 0; }));
}

TEST_F(CastRecording, leavesNothingSharedWhenThePortalDies) {
    const auto backend = openBackend();
    for (const bool comesAgainFirst : {true, false}) {
        auto shared = share(*backend, wholeDisplay);
        ASSERT_TRUE(shared);
        m_ground.killPortal();
        if (comesAgainFirst)
            m_desktop.startPortal();
        EXPECT_EQ(m_desktop.sessions(), 1);
        shared.reset();
        EXPECT_TRUE(eventually([this] { return m_desktop.sessions() == 0; }));
        m_desktop.startPortal();
    }

    // Nor does its question stay on the screen.
    m_desktop.script.isSlow = true;
    QTimer death;
    QObject::connect(&death, &QTimer::timeout, &death, [&] {
        if (m_desktop.isAsking())
            m_ground.killPortal();
    });
    death.start(50);
    EXPECT_EQ(failure(*backend, wholeDisplay), "The desktop's portal went away");
    EXPECT_TRUE(eventually([this] { return !m_desktop.isAsking() && m_desktop.sessions() == 0; }));
}

TEST_F(CastRecording, keepsWhatWasRecordedWhenTheSharingEnds) {
    const auto backend = openBackend();
    expectKept(*backend, [this] { m_desktop.endSessions(); }, ScreenErrorCode::sharingEnded);
    // The next recording is as good as any.
    expectKept(*backend, [this] { m_screen.close(); }, ScreenErrorCode::sharingEnded);
}

TEST_F(CastRecording, keepsWhatWasRecordedWhenPipeWireDies) {
    const auto backend = openBackend();
    expectKept(*backend, [this] { m_ground.killPipeWire(); }, ScreenErrorCode::connectionLost);
    // Nothing is asked of the desktop then: it may never answer, and what it agreed to would be used up.
    EXPECT_EQ(failure(*backend, wholeDisplay), "PipeWire, which carries the screen, cannot be reached");
    EXPECT_EQ(m_desktop.selections().size(), 1u);
    EXPECT_TRUE(eventually([this] { return m_desktop.sessions() == 0; }));
}

/// A compositor that sends a window in a buffer as large as the monitor, in another order of colours, without
/// times but with damage.
class WindowCastRecording : public CastRecording {
protected:
    static constexpr CastScreen::Options options{.buffer = {800, 600},
                                                 .crop = PixelRect{24, 16, 460, 200},
                                                 .format = 7,
                                                 .tellsTime = false,
                                                 .tellsDamage = true};
    WindowCastRecording() : CastRecording(options) {}
};

TEST_F(WindowCastRecording, showsTheWindowAloneInItsColours) {
    const auto backend = openBackend();
    const auto source = share(*backend, someWindow);
    ASSERT_TRUE(source);
    EXPECT_EQ(source->facts().place->size(), (PixelSize{460, 200}));
    StreamRun run(m_streams, source);
    ASSERT_TRUE(run.start());
    showNumbers(1, 15, 20);
    ASSERT_TRUE(run.stop());
    const auto numbers = numbersIn(run.movie());
    EXPECT_GE(numbers.size(), 4u);
    // The last came as the recording was stopped.
    EXPECT_GE(numbers.back().first, 12u);
    for (const int x : {2, 457})
        expectColour(run.movie(), x, 197, groundColour);

    // A still of it.
    WaylandStillCapture stills(*backend);
    const auto still = runTask(stills.captureWindow(source->facts().window->id, {}));
    ASSERT_TRUE(still);
    EXPECT_EQ(still->size(), QSize(460, 200));
    EXPECT_EQ(still->pixel(2, 2), 0xff000000u | CastScreen::ground);
}

} // namespace

} // namespace vantrell::testing
