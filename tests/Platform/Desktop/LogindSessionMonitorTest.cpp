// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/LogindSessionMonitor.h"

#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"

#include <QDBusArgument>

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using Event = SessionMonitor::Event;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr const char *managerPath = "/org/freedesktop/login1";
constexpr const char *managerInterface = "org.freedesktop.login1.Manager";

class LogindSessionMonitorTest : public ::testing::Test {
protected:
    void start() {
        monitor = std::make_unique<LogindSessionMonitor>(system.connection(), session.connection(),
                                                         [this](bool awake) { isBlankingSuspended = awake; });
        monitor->start([this](Event event) { events.push_back(event); });
    }

    void tell(const std::string &signal, bool value) {
        logind->emitSignal(managerPath, managerInterface, signal, "b", {value});
    }

    /// What and how the locks that logind knows of are held.
    std::vector<std::string> locks() {
        std::vector<std::string> found;
        const QVariantList answer = logind->call(managerPath, managerInterface, "ListInhibitors");
        const auto list = answer.value(0).value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString what, who, why, mode;
            uint user = 0, process = 0;
            list.beginStructure();
            list >> what >> who >> why >> mode >> user >> process;
            list.endStructure();
            found.push_back((what + ' ' + mode).toStdString());
        }
        list.endArray();
        return found;
    }

    bool eventuallyLocked(const std::vector<std::string> &expected) {
        return eventually([&] { return locks() == expected; });
    }

    ScopedEnvironment noSession{"XDG_SESSION_ID", std::nullopt};
    SessionBus system, session;
    std::unique_ptr<ServiceDouble> logind = ServiceDouble::logind(system);
    std::vector<Event> events;
    bool isBlankingSuspended = false;
    std::unique_ptr<LogindSessionMonitor> monitor;
};

TEST_F(LogindSessionMonitorTest, tellsOfSleepOfShutdownAndOfTheSessionsTurn) {
    start();
    // The session is known once its state has been asked for.
    const std::string path = "/org/freedesktop/login1/session/c1";
    ASSERT_TRUE(eventually([&] { return !logind->calls("GetSessionByPID").empty(); }));
    settle();
    tell("PrepareForSleep", true);
    tell("PrepareForSleep", false);
    tell("PrepareForShutdown", false);
    tell("PrepareForShutdown", true);
    ASSERT_TRUE(eventually([&] { return events.size() == 3; }));
    logind->setProperties(path, "org.freedesktop.login1.Session", {{"Active", false}});
    logind->setProperties(path, "org.freedesktop.login1.Session", {{"Active", false}, {"IdleHint", true}});
    logind->setProperties(path, "org.freedesktop.login1.Session", {{"Active", true}});
    ASSERT_TRUE(eventually([&] { return events.size() == 5; }));
    EXPECT_THAT(events, ElementsAre(Event::willSleep, Event::didWake, Event::willShutDown,
                                    Event::sessionResigned, Event::sessionBecameActive));
}

TEST_F(LogindSessionMonitorTest, holdsSleepBackJustWhileAskedToAlsoFromALogindThatStartedAnew) {
    start();
    EXPECT_THAT(locks(), IsEmpty());
    monitor->holdSleepBack(true);
    // Changes of mind that overtake the answers.
    monitor->holdSleepBack(false);
    monitor->holdSleepBack(true);
    ASSERT_TRUE(eventually([&] { return logind->calls("Inhibit").size() == 2; }));
    ASSERT_TRUE(eventuallyLocked({"sleep:shutdown delay"}));

    logind.reset();
    settle();
    logind = ServiceDouble::logind(system);
    EXPECT_TRUE(eventuallyLocked({"sleep:shutdown delay"}));
    tell("PrepareForSleep", true);
    EXPECT_TRUE(eventually([&] { return events == std::vector{Event::willSleep}; }));
    monitor->holdSleepBack(false);
    EXPECT_TRUE(eventuallyLocked({}));
}

TEST_F(LogindSessionMonitorTest, keepsTheScreenOnByWhoeverWouldBlankIt) {
    const auto saver = [&] {
        auto made =
            std::make_unique<ServiceDouble>(session, "org.freedesktop.ScreenSaver",
                                            "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver");
        made->addMethod("Inhibit", "ss", "u", "ret = 41");
        made->addMethod("UnInhibit", "u", "");
        return made;
    };
    auto first = saver();
    ServiceDouble gnome(session, "org.gnome.SessionManager", "/org/gnome/SessionManager",
                        "org.gnome.SessionManager");
    gnome.addMethod("Inhibit", "susu", "u", "ret = 7");
    gnome.addMethod("Uninhibit", "u", "");
    start();
    monitor->keepAwake(true);
    ASSERT_TRUE(eventually(
        [&] { return first->calls("Inhibit").size() == 1 && gnome.calls("Inhibit").size() == 1; }));
    EXPECT_EQ(gnome.calls("Inhibit")[0].value(3).toUInt(), 12u);
    EXPECT_TRUE(isBlankingSuspended);
    EXPECT_TRUE(eventuallyLocked({"idle block"}));

    first.reset();
    settle();
    auto second = saver();
    // It had its name before it knew the method: the desktop's own come up whole.
    monitor->keepAwake(false);
    ASSERT_TRUE(eventually([&] { return gnome.calls("Uninhibit").size() == 1; }));
    EXPECT_EQ(gnome.calls("Uninhibit")[0].value(0).toUInt(), 7u);
    EXPECT_FALSE(isBlankingSuspended);
    EXPECT_TRUE(eventuallyLocked({}));

    // All that the new one gave is given back, whatever overtook what.
    monitor->keepAwake(true);
    ASSERT_TRUE(
        eventually([&] { return gnome.calls("Inhibit").size() == 2 && !second->calls("Inhibit").empty(); }));
    monitor->keepAwake(false);
    ASSERT_TRUE(
        eventually([&] { return second->calls("UnInhibit").size() == second->calls("Inhibit").size(); }));
    EXPECT_EQ(second->calls("UnInhibit").back().value(0).toUInt(), 41u);
}

TEST_F(LogindSessionMonitorTest, isSilentWhereNobodyTellsAndWhenTheBusesDie) {
    logind.reset();
    start();
    monitor->holdSleepBack(true);
    monitor->keepAwake(true);
    settle();
    // logind comes later.
    logind = ServiceDouble::logind(system);
    EXPECT_TRUE(eventually([&] { return locks().size() == 2; }));
    logind.reset();
    system.kill();
    session.kill();
    settle();
    monitor->holdSleepBack(false);
    monitor->keepAwake(false);
    monitor->holdSleepBack(true);
    settle();
    EXPECT_THAT(events, IsEmpty());
}

} // namespace
} // namespace vantrell::testing
