// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11HotKeys.h"

#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RunTask.h"

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using Key = HotKeyBackend::Key;
using ::testing::ElementsAre;

class X11HotKeysTest : public ::testing::Test {
protected:
    std::unique_ptr<X11HotKeys> create() {
        auto made = X11HotKeys::create();
        EXPECT_TRUE(made) << made.error().message;
        return std::move(*made);
    }

    void grab(X11HotKeys &hotKeys, Key key) {
        const auto taken = hotKeys.grab(key, [this, key] { pressed.push_back(key); });
        EXPECT_TRUE(taken) << taken.error().message;
    }

    void xdotool(std::vector<std::string> words) {
        words.insert(words.begin(), "xdotool");
        ASSERT_EQ(session.run(words), 0);
    }

    bool eventuallyPressed(std::size_t times) {
        const bool came = eventually([&] { return pressed.size() >= times; });
        settle();
        return came && pressed.size() == times;
    }

    X11Session session;
    std::vector<Key> pressed;
};

TEST_F(X11HotKeysTest, areHeardWhateverLocksAreOnAndWhateverTheLayoutWritesOnTheKey) {
    const auto hotKeys = create();
    for (const Key key : {Key::digit7, Key::digit8, Key::digit9})
        grab(*hotKeys, key);
    xdotool({"key", "super+shift+7", "key", "super+shift+8", "key", "super+shift+9"});
    ASSERT_TRUE(eventuallyPressed(3));
    EXPECT_THAT(pressed, ElementsAre(Key::digit7, Key::digit8, Key::digit9));

    xdotool({"key", "Caps_Lock", "key", "super+shift+7", "key", "Num_Lock", "key", "super+shift+7", "key",
             "Caps_Lock", "key", "super+shift+7"});
    EXPECT_TRUE(eventuallyPressed(6));

    // Digits are written with Shift here; the keys are meant. So they are after a change of layout.
    ASSERT_EQ(session.run({"setxkbmap", "us,fr", "-option", "grp:caps_toggle"}), 0);
    settle();
    xdotool({"key", "ISO_Next_Group", "key", "super+shift+17"});
    EXPECT_TRUE(eventuallyPressed(7));
    EXPECT_EQ(pressed.back(), Key::digit8);

    // The combination itself, and no larger or smaller one.
    xdotool({"key", "super+17", "key", "shift+17", "key", "ctrl+super+shift+17", "key", "super+shift+18"});
    EXPECT_TRUE(eventuallyPressed(8));
}

TEST_F(X11HotKeysTest, stayWhenTheKeyboardMapMovesTheLocksAndTheSuperKey) {
    const auto hotKeys = create();
    grab(*hotKeys, Key::digit9);
    ASSERT_EQ(session.run({"xmodmap", "-e", "remove mod2 = Num_Lock", "-e", "add mod3 = Num_Lock", "-e",
                           "remove mod4 = Super_L Super_R", "-e", "clear mod4", "-e", "clear mod5", "-e",
                           "add mod5 = Super_L Super_R"}),
              0);
    // Until the change has been heard nobody can tell from outside.
    const bool heard = eventually([&] {
        xdotool({"key", "Num_Lock", "key", "super+shift+9", "key", "Num_Lock"});
        settle();
        return !pressed.empty();
    });
    EXPECT_TRUE(heard);
}

TEST_F(X11HotKeysTest, countAKeyThatRepeatsOnceAndLeaveTheKeyboardToOthersMeanwhile) {
    const auto hotKeys = create();
    grab(*hotKeys, Key::digit7);
    ASSERT_EQ(session.run({"xset", "r", "rate", "40", "100"}), 0);
    for (std::size_t round = 1; round <= 2; ++round) {
        xdotool({"keydown", "super", "keydown", "shift", "keydown", "7", "sleep", "0.3"});
        ASSERT_TRUE(eventuallyPressed(round));
        // Held down still: who answers the key takes the keyboard.
        xcb_connection_t *other = xcb_connect(nullptr, nullptr);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
        // A repetition takes it until it has been looked at.
        EXPECT_TRUE(eventually([&] {
            const auto taken = xcbReply(
                other,
                xcb_grab_keyboard(other, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                xcb_grab_keyboard_reply);
            return taken && taken->status == XCB_GRAB_STATUS_SUCCESS;
        }));
        // The modifiers go first in the second round.
        if (round == 1)
            xdotool({"keyup", "7", "keyup", "shift", "keyup", "super"});
        else
            xdotool({"keyup", "shift", "keyup", "super", "sleep", "0.1", "keyup", "7"});
        xcb_disconnect(other);
        settle();
        EXPECT_EQ(pressed.size(), round);
    }
    xdotool({"key", "super+shift+7"});
    EXPECT_TRUE(eventuallyPressed(3));
}

TEST_F(X11HotKeysTest, tellOfACombinationThatAnotherProgramHoldsAndTakeTheOthers) {
    auto other = create();
    grab(*other, Key::digit8);
    const auto hotKeys = create();
    const auto refused = hotKeys->grab(Key::digit8, [] {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (PlatformError{"x11", 10, "Another program uses Super+Shift+8"}));
    grab(*hotKeys, Key::digit9);
    xdotool({"key", "super+shift+8", "key", "super+shift+9"});
    ASSERT_TRUE(eventuallyPressed(2));

    other.reset();
    // Its connection is gone for the server a moment later.
    EXPECT_TRUE(eventually([&] { return hotKeys->grab(Key::digit8, [] {}).has_value(); }));
}

TEST_F(X11HotKeysTest, mayGoWithinTheirOwnPressAndEndQuietlyWithTheServer) {
    auto hotKeys = create();
    bool wasPressed = false;
    ASSERT_TRUE(hotKeys->grab(Key::digit7, [&] {
        hotKeys.reset();
        wasPressed = true;
    }));
    xdotool({"key", "super+shift+7"});
    EXPECT_TRUE(eventually([&] { return wasPressed; }));

    LogCapture log;
    hotKeys = create();
    grab(*hotKeys, Key::digit7);
    session.kill();
    EXPECT_TRUE(eventually([&] { return log.contains("hot keys end: "); }));
    settle();
    EXPECT_EQ(log.count("hot keys end: "), 1);
    EXPECT_FALSE(hotKeys->grab(Key::digit8, [] {}));
    EXPECT_FALSE(X11HotKeys::create());
}

} // namespace
} // namespace vantrell::testing
