// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/DesktopNotifier.h"

#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/RunTask.h"

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;

class DesktopNotifierTest : public ::testing::Test {
protected:
    void startDaemon(const std::string &capabilities = "actions body body-markup") {
        daemon = ServiceDouble::notifications(bus, capabilities);
    }

    /// Shows one with two actions; what is taken is noted.
    Notifier::Id show(DesktopNotifier &notifier, bool stays) {
        return notifier.show({"Recording <1>", "a & b", {{"default", "Open"}, {"stop", "Stop"}}, stays},
                             [this](const std::string &key) { taken.push_back(key); });
    }

    void act(uint number, const std::string &key) {
        daemon->emitSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked",
                           "us", {number, QString::fromStdString(key)});
    }

    bool eventuallyCalled(const std::string &member, std::size_t times) {
        return eventually([&] { return daemon->calls(member).size() == times; });
    }

    SessionBus bus;
    std::unique_ptr<ServiceDouble> daemon;
    std::vector<std::string> taken;
};

TEST_F(DesktopNotifierTest, showsWhatItIsGivenAndTellsOfTheActionsOfItsOwn) {
    startDaemon();
    DesktopNotifier notifier(bus.connection());
    ASSERT_TRUE(eventually([&] { return notifier.isAvailable(); }));
    const auto first = show(notifier, true);
    EXPECT_NE(show(notifier, false), first);
    ASSERT_TRUE(eventuallyCalled("Notify", 2));
    const QVariantList sent = daemon->calls("Notify")[0];
    EXPECT_EQ(sent.value(3).toString(), "Recording <1>");
    EXPECT_EQ(sent.value(4).toString(), "a &amp; b");
    EXPECT_EQ(sent.value(5).toStringList().join(' '), "default Open stop Stop");
    EXPECT_EQ(sent.value(7).toInt(), 0);
    EXPECT_EQ(daemon->calls("Notify")[1].value(7).toInt(), -1);

    settle();
    act(99, "stop");
    act(1, "stop");
    act(1, "default");
    ASSERT_TRUE(eventually([&] { return taken.size() == 2; }));
    EXPECT_THAT(taken, ElementsAre("stop", "default"));
    notifier.withdraw(first);
    notifier.withdraw(first);
    ASSERT_TRUE(eventuallyCalled("CloseNotification", 1));
    EXPECT_EQ(daemon->calls("CloseNotification")[0].value(0).toUInt(), 1u);
    act(1, "stop");
    act(2, "last");
    ASSERT_TRUE(eventually([&] { return taken.size() == 3; }));
    EXPECT_EQ(taken.back(), "last");

    // Withdrawn before the daemon has given it a number: it goes all the same.
    notifier.withdraw(show(notifier, true));
    ASSERT_TRUE(eventuallyCalled("CloseNotification", 2));
    EXPECT_EQ(daemon->calls("CloseNotification")[1].value(0).toUInt(), 3u);
}

TEST_F(DesktopNotifierTest, bringsBackWhatStaysWhenTheDaemonComesAgain) {
    auto notifier = std::make_unique<DesktopNotifier>(bus.connection());
    settle();
    EXPECT_FALSE(notifier->isAvailable());
    show(*notifier, false);
    show(*notifier, true);
    startDaemon();
    ASSERT_TRUE(eventuallyCalled("Notify", 1));

    daemon.reset();
    ASSERT_TRUE(eventually([&] { return !notifier->isAvailable(); }));
    // One that understands no markup gets the text as it is.
    startDaemon("actions body");
    ASSERT_TRUE(eventuallyCalled("Notify", 1));
    EXPECT_EQ(daemon->calls("Notify")[0].value(4).toString(), "a & b");
    settle();
    act(1, "stop");
    EXPECT_TRUE(eventually([&] { return taken == std::vector<std::string>{"stop"}; }));
    notifier.reset();
    EXPECT_TRUE(eventuallyCalled("CloseNotification", 1));

    daemon.reset();
    startDaemon("body");
    DesktopNotifier withoutActions(bus.connection());
    ASSERT_TRUE(eventuallyCalled("GetCapabilities", 1));
    settle();
    EXPECT_FALSE(withoutActions.isAvailable());
    bus.kill();
    settle();
    withoutActions.withdraw(show(withoutActions, true));
}

} // namespace
} // namespace vantrell::testing
