// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11StillCapture.h"
#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Stream/StreamRun.h"

#include <QRegion>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <set>
#include <utility>

namespace vantrell::testing {

namespace {

constexpr PixelRect wholeDesktop{0, 0, 640, 480};
constexpr PixelRect besideDesktop{700, 500, 10, 10};
constexpr std::uint32_t panelRed = 0xffff0000;

/// With a compositor and without one.
class OwnPanels : public ::testing::TestWithParam<bool> {
protected:
    OwnPanels() {
        auto created = X11CaptureBackend::create();
        backend = std::move(*created);
    }

    QImage still() {
        const auto picture = runTask(stills.captureArea(wholeDesktop, {}));
        EXPECT_TRUE(picture) << std::get<PlatformError>(picture.error()).message;
        return picture.value_or(QImage());
    }
    /// The desktop once it looks the same for a while: compositors draw when they like.
    QImage settledStill() {
        QImage last = still();
        if (!GetParam())
            return last;
        int same = 0;
        eventually([&] {
            QImage next = still();
            same = next == last ? same + 1 : 0;
            last = std::move(next);
            return same == 5;
        });
        return last;
    }
    static X11Application::Options panelOptions(const PixelRect &place, bool managed) {
        return {.pixels = place,
                .hasAlpha = true,
                .colour = panelRed,
                .overridesRedirect = !managed,
                .isPanel = true};
    }

    X11Session session{{.windowManager = true, .compositor = GetParam()}};
    std::unique_ptr<X11CaptureBackend> backend;
    X11StillCapture stills;
    StagedStreamFactory streams;
};

TEST_P(OwnPanels, areNotInStillsWhateverLiesUnderThem) {
    ASSERT_EQ(session.run({"hsetroot", "-solid", "#204060"}), 0);
    X11Application pad({.pixels = {40, 40, 300, 300}, .colour = 0x3070b0, .overridesRedirect = true});
    X11Application framed({.pixels = {250, 60, 200, 150}, .colour = 0x00a000});
    X11Application glass(
        {.pixels = {80, 90, 250, 60}, .hasAlpha = true, .colour = 0x80008000, .overridesRedirect = true});
    X11Application round(
        {.pixels = {60, 200, 200, 100}, .colour = 0xe0e000, .borderWidth = 5, .overridesRedirect = true});
    round.cutShape({20, 10, 150, 60});
    for (const bool managed : {false, true}) {
        SCOPED_TRACE(managed);
        X11Application panel(panelOptions({100, 100, 200, 180}, managed));
        X11Application popup({.pixels = {150, 120, 60, 40}, .colour = 0xffffff, .overridesRedirect = true});
        const std::vector<std::function<void()>> changes{
            [] {},
            [&] { framed.raise(); },
            [&] { glass.unmap(); },
            [&] { pad.moveResize({20, 30, 200, 190}); },
            [&] { glass.map(); },
            [&] { round.cutShape({0, 0, 100, 90}); },
            [&] { round.lower(); },
            [&] { pad.moveResize({40, 40, 300, 300}); },
            [&] {
                if (GetParam() && managed)
                    session.killCompositor();
            },
        };
        for (std::size_t i = 0; i < changes.size(); ++i) {
            SCOPED_TRACE(i);
            popup.raise();
            changes[i]();
            panel.raise();
            popup.raise();
            QImage with;
            QImage without;
            // A compositor fades what comes and goes beside the panel.
            EXPECT_TRUE(eventually([&] {
                panel.moveResize({100, 100, 200, 180});
                with = still();
                panel.moveResize(besideDesktop);
                without = settledStill();
                return with == without;
            }));
        }
    }
}

TEST_P(OwnPanels, moveOverAPlayingSceneAndAreInNoPictureOfIt) {
    constexpr PixelRect numbersAt{96, 96, framecode::width, framecode::height};
    X11Application pad({.pixels = wholeDesktop, .colour = 0x3070b0, .overridesRedirect = true});
    X11Painter painter;
    painter.openWindow(numbersAt, "scene");
    // Windows of others do what they like below the panel. (One above it that comes without a background
    // shows everyone the panel until it has drawn.)
    X11Application restless({.pixels = {80, 130, 300, 200}, .colour = 0x00a000, .overridesRedirect = true});
    auto panel = std::make_unique<X11Application>(panelOptions({120, 100, 200, 80}, false));
    settledStill();
    StreamRun run(streams, chosenArea(*backend, wholeDesktop));
    ASSERT_TRUE(run.start());
    ASSERT_TRUE(eventually([&] { return run.firstFrame().has_value(); }));
    double next = hostNow();
    for (int i = 1; i <= 120; ++i) {
        next += 1.0 / 30;
        eventually([next] { return hostNow() >= next; });
        painter.drawNumber(std::uint32_t(i), 0, 0);
        if (i % 40 == 20)
            panel.reset();
        else if (i % 40 == 30)
            panel = std::make_unique<X11Application>(panelOptions({300, 120, 200, 80}, false));
        else if (panel)
            panel->moveResize({100 + i * 2, 60 + i, 200, 80 + i % 7});
        // While it fades, a compositor draws more often than pictures are taken.
        if (i % 12 == 3 && !GetParam())
            restless.unmap();
        else if (i % 12 == 6 && !GetParam())
            restless.map();
        else if (i % 3 == 0)
            restless.moveResize({80 + i % 5, 140, 250 + i % 50, 180});
        painter.sync();
    }
    ASSERT_TRUE(run.stop());
    std::set<std::uint32_t> seen;
    int pictures = 0;
    int torn = 0;
    int shown = 0;
    forEachPicture(run.movie(), [&](const MoviePicture &picture) {
        ++pictures;
        const auto number = framecode::read(picture.luma + numbersAt.y * picture.lumaStride + numbersAt.x,
                                            picture.lumaStride);
        torn += !number && pictures > 1;
        seen.insert(number.value_or(0));
        QRegion red;
        for (int y = 0; y < wholeDesktop.height; y += 2) {
            for (int x = 0; x < wholeDesktop.width; x += 2)
                if (picture.at(x, y).cr >= 150)
                    red += QRect(x, y, 2, 2);
        }
        if (red.isEmpty())
            return;
        ++shown;
        std::cerr << "a panel is seen at " << red.boundingRect().x() << ',' << red.boundingRect().y() << ' '
                  << red.boundingRect().width() << 'x' << red.boundingRect().height() << " beside number "
                  << number.value_or(0) << '\n';
    });
    EXPECT_GE(seen.size(), 40u);
    // A busy machine disturbs all readings of a picture now and then.
    // A compositor may draw more often than pictures are taken, and begin before a change and end behind it.
    // A compositor that gets no time shows a panel for a while that has gone.
    EXPECT_LE(shown, GetParam() ? 2 : 0);
    EXPECT_LE(torn, pictures / (GetParam() ? 4 : 20));
}

TEST_P(OwnPanels, makeNoPictureByWhatTheyDraw) {
    X11Application pad({.pixels = wholeDesktop, .colour = 0x3070b0, .overridesRedirect = true});
    X11Application panel(panelOptions({100, 100, 200, 80}, false));
    settledStill();
    StreamRun run(streams, chosenArea(*backend, wholeDesktop));
    ASSERT_TRUE(run.start());
    ASSERT_TRUE(eventually([&] { return run.firstFrame().has_value(); }));
    for (int i = 0; i < 20; ++i) {
        panel.fill({i * 5, 10, 5, 30}, 0xffffffff);
        const double until = hostNow() + 0.03;
        eventually([until] { return hostNow() >= until; });
    }
    ASSERT_TRUE(run.stop());
    int pictures = 0;
    forEachPicture(run.movie(), [&](const MoviePicture &) { ++pictures; });
    // The first one, and the one that is held until the end.
    EXPECT_EQ(pictures, 2);
}

TEST_P(OwnPanels, wakeNobodyByWhatTheyDrawAndHideNothing) {
    X11Application pad({.pixels = wholeDesktop, .colour = 0x3070b0, .overridesRedirect = true});
    X11Application other({.pixels = {400, 300, 60, 40}, .colour = 0xb07030, .overridesRedirect = true});
    X11Application panel(panelOptions({100, 100, 200, 80}, false));
    settledStill();
    const auto frames = chosenArea(*backend, wholeDesktop)->makeFrames(CursorMode::leftOut);
    ASSERT_TRUE(frames->open());
    /// What of the desktop has been shown anew within that time.
    const auto shown = [&](double seconds) {
        QRegion region;
        int wakes = 0;
        for (const double until = hostNow() + seconds;; ++wakes) {
            if (frames->wait(0, until) != FrameWait::changed)
                return std::pair(region, wakes);
            const auto update = frames->fetch();
            EXPECT_TRUE(update);
            for (const FramePatch &patch : std::get<std::span<const FramePatch>>(update->content))
                region += QRect(patch.rect.x, patch.rect.y, patch.rect.width, patch.rect.height);
        }
    };
    ASSERT_TRUE(eventually([&] { return shown(0.3).second == 0; }));
    int wakes = 0;
    for (int i = 0; i < 20; ++i) {
        panel.fill({i * 5, 10, 5, 30}, 0xffffffff);
        wakes += shown(0.02).second;
    }
    EXPECT_LE(wakes, 3);
    // Neither what is drawn beneath nor what is drawn beside it is missed for that.
    for (const PixelRect &place : {PixelRect{120, 110, 40, 20}, PixelRect{500, 300, 40, 20}}) {
        panel.fill({0, 10, 100, 30}, 0xff00ff00);
        pad.fill(place, 0xffffff);
        QRegion seen;
        EXPECT_TRUE(eventually([&] {
            seen += shown(0.05).first;
            return seen.contains(QRect(place.x, place.y, place.width, place.height));
        }));
    }
    // What is drawn far apart at once is not all that lies between, but what changes there meanwhile is.
    const auto drawFarApart = [&](std::uint32_t colour, const std::function<void()> &meanwhile) {
        pad.fill({4, 4, 8, 8}, colour);
        meanwhile();
        pad.fill({620, 460, 8, 8}, colour);
        QRegion seen;
        EXPECT_TRUE(eventually([&] {
            seen += shown(0.05).first;
            return seen.contains(QRect(4, 4, 8, 8)) && seen.contains(QRect(620, 460, 8, 8));
        }));
        return seen;
    };
    const bool isPlain = !GetParam();
    EXPECT_FALSE(drawFarApart(0xff00ff, [] {}).intersects(QRect(200, 300, 60, 40)) && isPlain);
    EXPECT_TRUE(drawFarApart(0xffff00, [&] {
                    other.fill({10, 10, 20, 20}, 0xffffff);
                }).contains(QRect(410, 310, 20, 20)));
    EXPECT_TRUE(drawFarApart(0x00ff00, [&] { other.unmap(); }).contains(QRect(400, 300, 60, 40)));
    panel.unmap();
    pad.fill({120, 110, 40, 20}, 0x00ffff);
    EXPECT_TRUE(eventually([&] { return shown(0.05).first.intersects(QRect(120, 110, 40, 20)); }));
}

INSTANTIATE_TEST_SUITE_P(Desktops, OwnPanels, ::testing::Bool(),
                         [](const auto &desktopOf) { return desktopOf.param ? "composited" : "plain"; });

} // namespace
} // namespace vantrell::testing
