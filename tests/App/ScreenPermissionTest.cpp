// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ScreenPermission.h"

#include "AskedUser.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

namespace vantrell::testing {

namespace {

using namespace std::chrono_literals;

/// A desktop whose permission a test switches.
class SwitchedScreenAccess final : public ScreenAccess {
public:
    bool isGranted() const override { return granted; }
    void request() override { ++requests; }
    void openSettings() override { ++settingsOpened; }
    std::string systemName() const override { return "GNOME"; }

    bool granted = false;
    int requests = 0;
    int settingsOpened = 0;
};

Task<std::expected<void, PlatformError>> refusedCapture(std::stop_token) {
    co_return std::unexpected(PlatformError{"screen", 1, "not allowed"});
}

class ScreenPermissionTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    Settings settings{folder / "settings.ini"};
    SwitchedScreenAccess access;
    ManualClock clock;
    AskedUser user;
    LogCapture log;
    int relaunches = 0;
    bool startsAgain = true;
    ScreenPermission permission{access,
                                settings,
                                clock,
                                user.ask(),
                                {[this] {
                                     ++relaunches;
                                     return startsAgain;
                                 },
                                 refusedCapture}};
};

TEST_F(ScreenPermissionTest, explainsOnceAsksTheDesktopAndStartsAgainOnceWhenItIsGranted) {
    user.answers(1);
    runTask(permission.primeScreenPermission(false, {}));
    EXPECT_EQ(access.requests, 0);
    EXPECT_FALSE(settings.boolean("screenPermissionPrimed"));

    user.answers(0);
    runTask(permission.primeScreenPermission(true, {}));
    ASSERT_EQ(user.questions.size(), 2u);
    EXPECT_EQ(user.questions[1].informative,
              "Vantrell Capture needs GNOME Screen Recording permission. You will approve "
              "once, then the app restarts.");
    EXPECT_TRUE(log.contains("tcc register skipped: app not installed in Applications"));
    EXPECT_FALSE(permission.isWatching());

    runTask(permission.primeScreenPermission(false, {}));
    EXPECT_EQ(user.questions.size(), 2u);
    EXPECT_EQ(access.requests, 1);
    EXPECT_TRUE(log.contains("tcc register: not allowed"));
    clock.advance(200s);
    EXPECT_EQ(relaunches, 0);
    access.granted = true;
    clock.advance(1s);
    EXPECT_EQ(relaunches, 1);
    permission.relaunch();
    EXPECT_EQ(relaunches, 1);
    EXPECT_TRUE(runTask(permission.ensureScreenPermission({})));
    EXPECT_EQ(user.questions.size(), 2u);
}

TEST_F(ScreenPermissionTest, leadsToTheSettingsAndGivesUpWithTheUserOrAfterFiveMinutes) {
    user.answers(0);
    EXPECT_FALSE(runTask(permission.ensureScreenPermission({})));
    EXPECT_EQ(access.settingsOpened, 1);
    EXPECT_TRUE(permission.isWatching());
    // Asked again: one watch goes on from now.
    clock.advance(100s);
    user.answers(0);
    runTask(permission.menuRequestPermission({}));
    EXPECT_EQ(clock.sleeperCount(), 1);
    clock.advance(299s);
    EXPECT_FALSE(log.contains("screen permission not granted"));
    clock.advance(1s);
    EXPECT_TRUE(log.contains("screen permission not granted"));
    EXPECT_FALSE(permission.isWatching());
    access.granted = true;
    clock.advance(10s);
    EXPECT_EQ(relaunches, 0);

    user.answers(1);
    access.granted = false;
    EXPECT_FALSE(runTask(permission.ensureScreenPermission({})));
    EXPECT_FALSE(permission.isWatching());
    EXPECT_EQ(log.count("screen permission not granted"), 2);

    // A start that fails may be tried again.
    startsAgain = false;
    permission.relaunch();
    permission.relaunch();
    EXPECT_EQ(relaunches, 2);
    EXPECT_TRUE(log.contains("relaunch failed"));
}

} // namespace
} // namespace vantrell::testing
