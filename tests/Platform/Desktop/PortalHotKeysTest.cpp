// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/PortalHotKeys.h"

#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/PortalDouble.h"

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using Key = HotKeyBackend::Key;

/// The real portal before a scripted desktop.
class PortalHotKeysTest : public ::testing::Test {
protected:
    void start(const PortalDouble::Script &script, const std::string &name) {
        m_desktop = std::make_unique<PortalDouble>(m_ground, script);
        PortalHotKeys::Options options{
            {{Key::digit7, "capture-area", "Area"}, {Key::digit9, "toggle-recording", "Record"}},
            name,
            [](Key key) { return key == Key::digit7 ? "ampersand" : "parenleft"; }};
        m_keys = std::make_unique<PortalHotKeys>(m_ground.bus().connection(), options);
        m_keys->onChange = [this] { ++m_changes; };
        ASSERT_TRUE(m_keys->grab(Key::digit7, [this] { ++m_areas; }));
        ASSERT_TRUE(m_keys->grab(Key::digit9, [this] { ++m_toggles; }));
        ASSERT_TRUE(eventually([this] { return m_changes > 0; }));
    }

    PortalGround m_ground;
    std::unique_ptr<PortalDouble> m_desktop;
    std::unique_ptr<PortalHotKeys> m_keys;
    int m_changes = 0, m_areas = 0, m_toggles = 0;
};

TEST_F(PortalHotKeysTest, areWhatTheUserAssignedAndSurviveThePortalAndItsPart) {
    start({.hasHotKeys = true}, "GNOME");
    EXPECT_EQ(m_keys->assigned(Key::digit7), "LOGO+SHIFT+7");
    EXPECT_FALSE(m_keys->problem());
    ASSERT_TRUE(m_desktop->press("toggle-recording"));
    EXPECT_TRUE(eventually([this] { return m_toggles == 1; }));
    EXPECT_EQ(m_areas, 0);
    m_desktop->assign("capture-area", "F9");
    EXPECT_TRUE(eventually([this] { return m_keys->assigned(Key::digit7) == "F9"; }));

    for (const bool isPart : {false, true}) {
        if (isPart) {
            m_desktop->restart();
        } else {
            m_ground.killPortal();
            m_desktop->startPortal();
        }
        EXPECT_TRUE(eventually([&] { return m_desktop->bindings() == (isPart ? 3 : 2); }));
        m_areas = 0;
        EXPECT_TRUE(
            eventually([this] { return m_desktop->press("capture-area") && (settle(), m_areas > 0); }));
        EXPECT_FALSE(m_keys->problem());
    }
}

TEST_F(PortalHotKeysTest, areNamedAsPlasmaHearsThem) {
    start({.hasHotKeys = true, .bindsAtOpening = true}, "KDE");
    EXPECT_EQ(m_keys->assigned(Key::digit9), "LOGO+parenleft");
    // It would open the desktop's settings.
    EXPECT_EQ(m_desktop->bindings(), 0);
    ASSERT_TRUE(m_desktop->press("capture-area"));
    EXPECT_TRUE(eventually([this] { return m_areas == 1; }));
}

TEST_F(PortalHotKeysTest, areBoundByHandWhereTheDesktopHasNoneOrItsUserSaysNo) {
    start({}, "GNOME");
    ASSERT_TRUE(m_keys->problem());
    EXPECT_THAT(m_keys->problem()->message, ::testing::HasSubstr("in Settings, Keyboard, Custom Shortcuts"));
    m_keys.reset();
    m_desktop.reset();
    m_ground.killPortal();
    m_changes = 0;
    start({.hasHotKeys = true, .bindResponse = 1}, "Other");
    ASSERT_TRUE(m_keys->problem());
    EXPECT_THAT(m_keys->problem()->message, ::testing::HasSubstr("vantrell-capture toggle"));
    EXPECT_FALSE(m_keys->assigned(Key::digit7));
}

} // namespace
} // namespace vantrell::testing
