// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/FloatingPanel.h"

#include "Panels/PanelPlacement.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <QGuiApplication>
#include <QScreen>

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

class FloatingPanelTest : public ::testing::Test {
protected:
    FloatingPanelTest() {
        panel.resizePanel({200, 60});
        panel.placePanel({300, 300});
    }
    void show() {
        panel.showPanel();
        ASSERT_TRUE(eventually([this] { return colourAt({320, 330}) == colourOfPanel(); }));
    }
    QRgb colourAt(QPoint place) const {
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, place.x(), place.y(), 1, 1)
            .toImage()
            .pixel(0, 0);
    }
    QRgb colourOfPanel() const { return panel.theme().panel.rgb(); }

    FloatingPanel panel{FloatingPanel::Options{}};
};

TEST_F(FloatingPanelTest, isAShapedWindowThatComesToLieAboveApplicationsAndLeavesThemTheKeyboard) {
    X11Application editor({.pixels = {100, 100, 700, 400}, .colour = 0xff8800});
    xdotool({"mousemove", "150", "150", "click", "1"});
    ASSERT_TRUE(eventually([&] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    show();
    EXPECT_EQ(DesktopLink::instance().focusedWindow(), editor.window());
    // Where the shadow would be, and in the round corner, the application is seen.
    EXPECT_EQ(colourAt({292, 330}), qRgb(0xff, 0x88, 0));
    EXPECT_EQ(colourAt({300, 300}), qRgb(0xff, 0x88, 0));

    // A click there is the application's, one on the panel is not.
    xdotool({"mousemove", "290", "330", "click", "1", "mousemove", "320", "330", "click", "1"});
    ASSERT_TRUE(eventually([&] { return editor.marks().size() == 2; }));
    EXPECT_EQ(DesktopLink::instance().focusedWindow(), editor.window());

    X11Application intruder({.pixels = {250, 250, 300, 200}, .colour = 0x00ff00});
    intruder.raise();
    EXPECT_TRUE(eventually([this] { return colourAt({320, 330}) == colourOfPanel(); }));
    // What draws menus and locks screens may lie above.
    X11Application menu({.pixels = {310, 310, 60, 40}, .colour = 0x0000ff, .overridesRedirect = true});
    intruder.moveResize({250, 250, 310, 200});
    settle();
    EXPECT_EQ(colourAt({320, 330}), qRgb(0, 0, 0xff));
}

TEST_F(FloatingPanelTest, followsACompositorThatComesAndGoes) {
    X11Application editor({.pixels = {100, 100, 700, 400}, .colour = 0xff8800});
    show();
    {
        const ChildProcess compositor({"picom", "--backend", "xrender", "--config", "/dev/null"});
        ASSERT_TRUE(eventually([this] { return panel.isBlended(); }));
        // The orange shines through the panel, and its shadow lies on it.
        EXPECT_TRUE(eventually([this] {
            return qRed(colourAt({292, 330})) < 0xf0 &&
                   qRed(colourAt({320, 330})) > qRed(colourOfPanel()) + 5;
        })) << std::hex
            << colourAt({292, 330}) << " " << colourAt({320, 330});
    }
    EXPECT_TRUE(eventually([this] {
        return colourAt({292, 330}) == qRgb(0xff, 0x88, 0) && colourAt({320, 330}) == colourOfPanel();
    })) << std::hex
        << colourAt({292, 330}) << " " << colourAt({320, 330});
}

TEST_F(FloatingPanelTest, isDraggedWithinTheScreenAndRemembersItsPlace) {
    const TemporaryFolder folder;
    Settings settings(folder / "settings.ini");
    PanelPlacement placement(settings, "bar");
    const QScreen &screen = *QGuiApplication::primaryScreen();
    const QSize size(200, 60);
    EXPECT_FALSE(placement.restore(screen, size));
    panel.onMoved = [&](QRect frame) { placement.save(frame); };
    show();
    xdotool({"mousemove", "320", "330", "mousedown", "1", "mousemove", "400", "350", "mousemove", "1199",
             "360", "mouseup", "1"});
    ASSERT_TRUE(eventually([&] { return placement.restore(screen, size).has_value(); }));
    EXPECT_EQ(panel.panelFrame(), QRect(QPoint(1000, 330), size));
    EXPECT_EQ(placement.restore(screen, size), QPoint(1000, 330));
    // A wider panel does not fit there any more; neither does nonsense.
    EXPECT_FALSE(placement.restore(screen, {201, 60}));
    settings.setNumber("panel.bar." + screen.name().toStdString() + ".x", 1e300);
    EXPECT_FALSE(placement.restore(screen, size));
}

TEST_F(FloatingPanelTest, comesToTheScreenThatIsLeftWhenItsOwnGoes) {
    const auto xrandr = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "xrandr");
        EXPECT_EQ(ChildProcess(arguments).waitForExit(), 0);
    };
    xrandr({"--setmonitor", "LEFT", "600/150x700/180+0+0", "screen"});
    xrandr({"--setmonitor", "RIGHT", "600/150x700/180+600+0", "none"});
    ASSERT_TRUE(eventually([] { return QGuiApplication::screens().size() == 2; }));
    panel.placePanel({900, 300});
    panel.showPanel();
    EXPECT_EQ(panel.panelFrame().topLeft(), QPoint(900, 300));
    xrandr({"--delmonitor", "RIGHT"});
    EXPECT_TRUE(eventually([this] { return panel.panelFrame() == QRect(400, 300, 200, 60); }))
        << panel.panelFrame().x();
    xrandr({"--delmonitor", "LEFT"});
    EXPECT_TRUE(eventually([] { return QGuiApplication::primaryScreen()->geometry().width() == 1200; }));
}

} // namespace

} // namespace vantrell::testing
