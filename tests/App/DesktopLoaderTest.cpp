// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/DesktopLoader.h"

#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

namespace vantrell::testing {

namespace {

TEST(DesktopLoader, hasSomethingForEachServiceWhateverTheDesktopHas) {
    const ScopedEnvironment noSystemBus("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const TemporaryFolder folder;
    const ScopedEnvironment configuration("XDG_CONFIG_HOME", folder.path().string());
    SessionBus &bus = SessionBus::ofThisProcess();
    const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    {
        const DesktopServices services = loadDesktopServices();
        EXPECT_FALSE(services.hotKeys->grab(HotKeyBackend::Key::digit7, [] {}));
        services.session->start([](SessionMonitor::Event) {});
        services.session->holdSleepBack(true);
        services.session->keepAwake(true);
        EXPECT_FALSE(services.notifications->isAvailable());
        EXPECT_TRUE(services.screenAccess->isGranted());
        EXPECT_EQ(services.screenAccess->systemName(), "GNOME");
        EXPECT_FALSE(services.loginItem->isEnabled());
        settle();
    }
    const X11Session session;
    const auto daemon = ServiceDouble::notifications(bus, "actions");
    const DesktopServices services = loadDesktopServices();
    EXPECT_TRUE(services.hotKeys->grab(HotKeyBackend::Key::digit7, [] {}));
    services.session->keepAwake(true);
    EXPECT_TRUE(eventually([&] { return services.notifications->isAvailable(); }));
    services.session->keepAwake(false);
}

} // namespace
} // namespace vantrell::testing
