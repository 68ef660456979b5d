// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Geometry.h"
#include "Support/Settings.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <cstring>

namespace vantrell::testing {

namespace {

using Json = nlohmann::json;

/// A client that looks at the screen and asks for the keyboard and the pointer as others do.
class Witness {
public:
    Witness() : m_connection(xcb_connect(nullptr, nullptr)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    }
    ~Witness() { xcb_disconnect(m_connection); }
    Witness(const Witness &) = delete;
    Witness &operator=(const Witness &) = delete;

    std::uint32_t pixel(int x, int y) const {
        std::uint32_t value = 0;
        auto *reply = xcb_get_image_reply(m_connection,
                                          xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root,
                                                        std::int16_t(x), std::int16_t(y), 1, 1, ~0u),
                                          nullptr);
        if (reply)
            std::memcpy(&value, xcb_get_image_data(reply), sizeof value);
        std::free(reply);
        return value & 0xffffff;
    }
    xcb_window_t focus() const {
        auto *reply = xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr);
        const xcb_window_t window = reply ? reply->focus : XCB_NONE;
        std::free(reply);
        return window;
    }
    void setFocus(xcb_window_t window) const {
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        xcb_flush(m_connection);
    }
    /// Nobody else holds the keyboard or the pointer.
    bool canGrab() const {
        constexpr auto async = XCB_GRAB_MODE_ASYNC;
        auto *keyboard = xcb_grab_keyboard_reply(
            m_connection, xcb_grab_keyboard(m_connection, 0, m_root, XCB_CURRENT_TIME, async, async),
            nullptr);
        auto *pointer = xcb_grab_pointer_reply(
            m_connection,
            xcb_grab_pointer(m_connection, 0, m_root, 0, async, async, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
            nullptr);
        const bool are = keyboard && pointer && keyboard->status == XCB_GRAB_STATUS_SUCCESS &&
                         pointer->status == XCB_GRAB_STATUS_SUCCESS;
        std::free(keyboard);
        std::free(pointer);
        xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
        xcb_ungrab_pointer(m_connection, XCB_CURRENT_TIME);
        xcb_flush(m_connection);
        return are;
    }

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
};

class SelectionOverlayTest : public ::testing::Test {
protected:
    SelectionOverlayTest() { environment.insert("QT_QPA_PLATFORM", "xcb"); }
    ~SelectionOverlayTest() override {
        host.kill();
        host.waitForFinished();
    }

    void start(const std::string &tool, const QStringList &barTop = {}) {
        host.setProcessEnvironment(environment);
        host.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        host.start(OVERLAY_HOST,
                   QStringList{QString::fromStdString(tool), QString::fromStdString(settings())} + barTop);
        EXPECT_EQ(next(), Json({{"shown", true}}));
    }
    /// What the program tells next.
    Json next() {
        if (!eventually([this] { return host.canReadLine(); })) {
            ADD_FAILURE() << "the overlay's program told nothing";
            return {};
        }
        return Json::parse(host.readLine().toStdString());
    }
    Json nextRegion(const Rect &rect, const std::string &display, bool record) {
        return {{"picked", "region"},
                {"rect", {rect.x, rect.y, rect.width, rect.height}},
                {"display", display},
                {"record", record}};
    }
    /// One xdotool with all its commands.
    void input(const std::string &commands) {
        std::vector<std::string> words{"xdotool"};
        for (const QString &word : QString::fromStdString(commands).split(' '))
            words.push_back(word.toStdString());
        EXPECT_EQ(session.run(words), 0) << commands;
    }
    void twoDisplays() {
        session.run({"xrandr", "--setmonitor", "LEFT", "600/160x600/160+0+0", "screen"});
        session.run({"xrandr", "--setmonitor", "RIGHT", "600/160x600/160+600+0", "none"});
        environment.insert("QT_SCREEN_SCALE_FACTORS", "LEFT=1;RIGHT=2");
    }
    bool turns(int x, int y, std::uint32_t colour) {
        return eventually([&] { return isLike(witness.pixel(x, y), colour); });
    }
    /// But for how the server rounds.
    static bool isLike(std::uint32_t a, std::uint32_t b) {
        const auto near = [&](int shift) {
            return std::abs(int(a >> shift & 0xff) - int(b >> shift & 0xff)) <= 2;
        };
        return near(0) && near(8) && near(16);
    }
    bool hasEnded() {
        return eventually([this] { return host.state() == QProcess::NotRunning; });
    }
    bool isFocusOurs() {
        return eventually([&] { return witness.focus() != pad.window(); });
    }
    std::string settings() const { return folder / "settings.ini"; }

    X11Session session{{.width = 1200, .height = 600, .windowManager = true}};
    Witness witness;
    X11Application pad{{.pixels = {20, 200, 560, 380}, .colour = white}};
    TemporaryFolder folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QProcess host;

    static constexpr std::uint32_t white = 0xffffff;
    /// White under the dimming: 45 % of a near black.
    static constexpr std::uint32_t dimmedWhite = 0x919291;
};

TEST_F(SelectionOverlayTest, drawsMovesAndResizesAnAreaThatItRemembers) {
    witness.setFocus(pad.window());
    start("area");
    ASSERT_TRUE(turns(60, 560, dimmedWhite)) << std::hex << witness.pixel(60, 560);
    EXPECT_TRUE(isFocusOurs());
    input("mousemove 100 250 mousedown 1 mousemove 200 300 mousemove 300 450 mouseup 1");
    EXPECT_TRUE(turns(200, 350, white)) << "what is selected is not dimmed";
    EXPECT_TRUE(turns(299, 350, white)) << "nor covered by its line";
    EXPECT_TRUE(isLike(witness.pixel(60, 560), dimmedWhite));
    // Inside, then at its right edge, then one point at a time.
    input("mousemove 200 350 mousedown 1 mousemove 230 370 mousemove 250 370 mouseup 1");
    input("mousemove 350 400 mousedown 1 mousemove 380 400 mousemove 400 400 mouseup 1");
    input("key Right key shift+Up key alt+Down key ctrl+Return");
    EXPECT_EQ(next(), nextRegion({151, 260, 250, 201}, "screen", false));
    EXPECT_TRUE(eventually([&] { return witness.focus() == pad.window(); })) << "the keyboard is given back";
    EXPECT_EQ(witness.pixel(60, 560), white) << "its windows are gone when it tells";
    ASSERT_TRUE(hasEnded());

    start("area");
    EXPECT_TRUE(turns(60, 560, dimmedWhite));
    input("mousemove 200 350 click --repeat 2 --delay 50 1");
    EXPECT_EQ(next(), nextRegion({151, 260, 250, 201}, "screen", true));
    ASSERT_TRUE(hasEnded());

    // Above a bar that has come where its buttons were.
    start("area", {"465"});
    EXPECT_TRUE(turns(60, 560, dimmedWhite));
    input("mousemove 331 421 click 1");
    EXPECT_EQ(next(), nextRegion({151, 260, 250, 201}, "screen", true));
}

TEST_F(SelectionOverlayTest, endsByEscapeARightClickAndAnotherTool) {
    witness.setFocus(pad.window());
    for (const char *end : {"key Escape", "mousemove 300 300 click 3",
                            "mousemove 9 9 mousedown 1 mousemove "
                            "90 90 key Escape mouseup 1"}) {
        start("area");
        ASSERT_TRUE(isFocusOurs());
        input(end);
        EXPECT_EQ(next(), Json({{"picked", "nothing"}})) << end;
        EXPECT_TRUE(eventually([&] { return witness.focus() == pad.window(); })) << end;
        ASSERT_TRUE(hasEnded());
    }
    EXPECT_FALSE(Settings(settings()).number("area.screen.x")) << "a drag that was broken off";
    start("area");
    ASSERT_TRUE(isFocusOurs());
    input("key 3 key Tab key F6 key Return");
    EXPECT_EQ(next(), Json({{"wanted", "screen"}}));
    EXPECT_EQ(next(), Json({{"wanted", "bar"}}));
    EXPECT_EQ(next(), Json({{"picked", "display"}, {"display", "screen"}, {"record", true}}));
}

TEST_F(SelectionOverlayTest, picksWindowsAsTheyAreAtThatMoment) {
    auto above = std::make_unique<X11Application>(X11Application::Options{.pixels = {700, 100, 200, 200}});
    X11Application other({.pixels = {800, 150, 200, 200}, .colour = white});
    input("mousemove 750 120");
    start("window");
    EXPECT_TRUE(turns(750, 280, 0x3070b0)) << "the one at the pointer is lit";
    EXPECT_TRUE(turns(850, 250, dimmedWhite)) << "where it is not covered";
    above->close();
    above.reset();
    input("click 1");
    input("mousemove 980 330");
    EXPECT_TRUE(turns(980, 330, white));
    input("click 1");
    EXPECT_EQ(
        next(),
        Json({{"picked", "window"}, {"window", other.window()}, {"display", "screen"}, {"record", true}}))
        << "not the one that has been closed";
}

TEST_F(SelectionOverlayTest, countsInThePointsOfEachDisplay) {
    twoDisplays();
    start("area");
    ASSERT_TRUE(turns(60, 560, dimmedWhite));
    input("mousemove 700 100 mousedown 1 mousemove 800 200 mousemove 900 300 mouseup 1 key Return");
    EXPECT_EQ(next(), nextRegion({50, 50, 100, 100}, "RIGHT", true));
    ASSERT_TRUE(hasEnded());
    // Carried over to the other display, it keeps its size in points and its place under the pointer.
    input("mousemove 800 200");
    start("area");
    ASSERT_TRUE(turns(60, 560, dimmedWhite));
    input("mousemove 800 200 mousedown 1 mousemove 700 250 mousemove 300 350 mousemove 301 351 mouseup 1");
    EXPECT_TRUE(turns(300, 390, white));
    input("key Return");
    EXPECT_EQ(next(), nextRegion({251, 301, 100, 100}, "LEFT", true));
}

TEST_F(SelectionOverlayTest, survivesADisplayThatIsUnplugged) {
    twoDisplays();
    start("area");
    ASSERT_TRUE(turns(60, 560, dimmedWhite));
    input("mousemove 100 250 mousedown 1 mousemove 200 300 mousemove 300 450 mouseup 1");
    ASSERT_TRUE(turns(200, 350, white));
    session.run({"xrandr", "--delmonitor", "RIGHT"});
    EXPECT_EQ(next(), Json({{"shown", true}}));
    input("key Left key Return");
    EXPECT_EQ(next(), nextRegion({99, 250, 200, 200}, "LEFT", true));
}

TEST_F(SelectionOverlayTest, leavesKeyboardAndPointerFreeWhenItIsKilled) {
    witness.setFocus(pad.window());
    start("area");
    ASSERT_TRUE(isFocusOurs());
    input("mousemove 100 250 mousedown 1 mousemove 200 300");
    host.kill();
    ASSERT_TRUE(hasEnded());
    EXPECT_TRUE(turns(60, 560, white));
    input("mouseup 1");
    EXPECT_TRUE(eventually([&] { return witness.canGrab(); }));
    EXPECT_TRUE(eventually([&] { return witness.focus() == pad.window(); }));
    input("mousemove 300 300 click 1");
    EXPECT_TRUE(eventually([&] { return !pad.marks().empty(); }));
}

} // namespace
} // namespace vantrell::testing
