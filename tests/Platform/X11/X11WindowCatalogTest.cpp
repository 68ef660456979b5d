// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowCatalog.h"

#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <thread>

#include <unistd.h>

using ::testing::ElementsAre;

namespace vantrell::testing {

namespace {

class X11WindowCatalogTest : public ::testing::Test {
protected:
    explicit X11WindowCatalogTest(bool windowManager = true)
        : session({.windowManager = windowManager}), connection(std::move(X11Connection::open().value())),
          catalog(*connection) {}

    std::vector<WindowDescription> list() {
        auto windows = catalog.windows(displays);
        EXPECT_TRUE(windows) << windows.error().message;
        return windows.value_or(std::vector<WindowDescription>());
    }
    std::vector<std::uint32_t> ids() {
        std::vector<std::uint32_t> ids;
        for (const WindowDescription &window : list())
            ids.push_back(window.id);
        return ids;
    }
    /// Waits until exactly these windows are listed, in this order.
    void expectListed(const std::vector<std::uint32_t> &wanted) {
        EXPECT_TRUE(eventually([&] { return ids() == wanted; })) << ::testing::PrintToString(ids());
    }

    X11Session session;
    std::vector<Display> displays{{"screen", "screen", {0, 0, 640, 480}, {0, 0, 640, 480}, 1, true}};
    std::unique_ptr<X11Connection> connection;
    X11WindowCatalog catalog;
};

class X11WithoutWindowManagerTest : public X11WindowCatalogTest {
protected:
    X11WithoutWindowManagerTest() : X11WindowCatalogTest(false) {}
};

TEST_F(X11WindowCatalogTest, listsWindowsOfApplicationsTopmostFirstWithoutTheirFrames) {
    X11Application below({.pixels = {50, 40, 200, 150}, .title = "below"});
    X11Application above({.pixels = {120, 90, 100, 80}, .title = "above", .windowClass = "Above"});
    expectListed({above.window(), below.window()});
    below.raise();
    expectListed({below.window(), above.window()});

    const WindowDescription window = list().front();
    EXPECT_EQ(window.title, "below");
    EXPECT_EQ(window.applicationId, "Pad");
    EXPECT_EQ(window.applicationName, "Pad");
    EXPECT_EQ(window.pixels, (PixelRect{50, 40, 200, 150}));
    EXPECT_EQ(window.frame, (Rect{50, 40, 200, 150}));
    displays = {{"left", "left", {0, 0, 40, 480}, {0, 0, 40, 480}, 1, true},
                {"right", "right", {40, 0, 300, 240}, {40, 0, 600, 480}, 2, false}};
    EXPECT_EQ(list().front().frame, (Rect{45, 20, 100, 75}));
}

TEST_F(X11WindowCatalogTest, leavesOutPanelsTheDesktopMinimisedWindowsAndOurOwn) {
    const auto at = [](int x) { return X11Application::Options{.pixels = {x, 100, 60, 50}}; };
    X11Application dock(at(10)), desktop(at(110)), minimised(at(210)), ours(at(310)), ordinary(at(410));
    X11Application menu({.pixels = {510, 100, 60, 50}, .overridesRedirect = true});
    dock.setNumbers("_NET_WM_WINDOW_TYPE", "ATOM", {dock.atom("_NET_WM_WINDOW_TYPE_DOCK")});
    desktop.setNumbers("_NET_WM_WINDOW_TYPE", "ATOM", {desktop.atom("_NET_WM_WINDOW_TYPE_DESKTOP")});
    ours.setNumbers("_NET_WM_PID", "CARDINAL", {std::uint32_t(::getpid())});
    EXPECT_EQ(session.run({"xdotool", "windowminimize", std::to_string(minimised.window())}), 0);
    expectListed({ordinary.window()});
}

TEST_F(X11WindowCatalogTest, readsNamesInWhateverEncodingTheyCome) {
    X11Application pad;
    expectListed({pad.window()});
    const auto title = [this] { return list().front().title.value_or("-"); };
    pad.setText("WM_NAME", "STRING", "Caf\xe9");
    EXPECT_EQ(title(), "Café");
    pad.setText("_NET_WM_NAME", "UTF8_STRING", "Plan · été");
    EXPECT_EQ(title(), "Plan · été");
    pad.setText("_NET_WM_NAME", "UTF8_STRING", "cut \xc3");
    EXPECT_EQ(title(), "cut \uFFFD");
    pad.setText("_NET_WM_NAME", "UTF8_STRING", "");
    EXPECT_EQ(title(), "Café");
}

TEST_F(X11WindowCatalogTest, namesApplicationsAsTheirDesktopFilesDo) {
    const TemporaryFolder data;
    std::filesystem::create_directories(data / "applications");
    std::ofstream(data / "applications/org.example.Pad.desktop")
        << "[Desktop Entry]\nName=Sketch Pad\nName[xx]=Other\n[Desktop Action new]\nName=New Window\n";
    std::ofstream(data / "applications/strange-file.desktop")
        << "[Desktop Entry]\nName = Painter Pro\nStartupWMClass=painter-class\n";
    const ScopedEnvironment environment("XDG_DATA_HOME", data.path().string());
    X11WindowCatalog fresh(*connection);
    X11Application pad({.windowClass = "Painter-Class"});
    expectListed({pad.window()});
    EXPECT_EQ(fresh.windows(displays)->front().applicationName, "Painter Pro");
    EXPECT_EQ(fresh.windows(displays)->front().applicationId, "Painter-Class");
    pad.setText("_GTK_APPLICATION_ID", "UTF8_STRING", "org.example.Pad");
    EXPECT_EQ(fresh.windows(displays)->front().applicationName, "Sketch Pad");
    EXPECT_EQ(fresh.windows(displays)->front().applicationId, "org.example.Pad");
    pad.setText("_GTK_APPLICATION_ID", "UTF8_STRING", "../applications/org.example.Pad");
    EXPECT_EQ(fresh.windows(displays)->front().applicationName, "Painter Pro");
}

TEST_F(X11WindowCatalogTest, followsAWindowWithoutTheShadowItDrawsItself) {
    X11Application pad;
    EXPECT_EQ(catalog.bounds(pad.window()), (PixelRect{50, 40, 200, 150}));
    pad.setNumbers("_GTK_FRAME_EXTENTS", "CARDINAL", {10, 12, 8, 14});
    EXPECT_EQ(catalog.bounds(pad.window()), (PixelRect{60, 48, 178, 128}));
    pad.moveResize({80, 70, 120, 100});
    EXPECT_TRUE(eventually([&] { return catalog.bounds(pad.window()) == PixelRect{90, 78, 98, 78}; }));
    pad.setNumbers("_GTK_FRAME_EXTENTS", "CARDINAL", {60, 60, 0, 0});
    EXPECT_EQ(catalog.bounds(pad.window()), (PixelRect{80, 70, 120, 100}));
    pad.close();
    EXPECT_EQ(catalog.bounds(pad.window()), std::nullopt);
}

TEST_F(X11WindowCatalogTest, survivesWindowsThatVanishWhileTheyAreListed) {
    X11Application pad;
    expectListed({pad.window()});
    std::atomic<bool> done = false;
    std::thread coming([&done] {
        X11Painter painter;
        while (!done) {
            painter.openWindow({10, 10, 30, 30}, "brief", false);
            painter.closeWindow();
        }
    });
    for (int lists = 0; lists < 60; ++lists)
        EXPECT_THAT(ids(), ::testing::Contains(pad.window()));
    done = true;
    coming.join();
    // No answer to a vanished window was left over to be taken for another's.
    expectListed({pad.window()});
    EXPECT_EQ(xcb_poll_for_event(connection->xcb()), nullptr);
}

TEST_F(X11WindowCatalogTest, saysWhenTheServerHasGone) {
    session.kill();
    const auto windows = catalog.windows(displays);
    ASSERT_FALSE(windows);
    EXPECT_EQ(windows.error(), X11Connection::lostError());
}

TEST_F(X11WithoutWindowManagerTest, listsWhatLiesOnTheRoot) {
    X11Application below, above, hidden, menu({.overridesRedirect = true});
    hidden.unmap();
    expectListed({above.window(), below.window()});
    // What a window manager that crashed has left behind.
    for (const char *name : {"_NET_CLIENT_LIST_STACKING", "_NET_SUPPORTING_WM_CHECK"})
        EXPECT_EQ(session.run({"xprop", "-root", "-f", name, "32x", "-set", name, "0x1234567"}), 0);
    expectListed({above.window(), below.window()});
}

TEST_F(X11WithoutWindowManagerTest, findsTheApplicationInAnOldWindowManagersFrame) {
    X11Application frame({.pixels = {30, 30, 200, 200}}), inside({.pixels = {0, 0, 100, 100}});
    xcb_reparent_window(connection->xcb(), inside.window(), frame.window(), 5, 20);
    inside.setNumbers("WM_STATE", "WM_STATE", {1, 0});
    expectListed({inside.window()});
    EXPECT_EQ(list().front().pixels, (PixelRect{35, 50, 100, 100}));
}

} // namespace
} // namespace vantrell::testing
