// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/PortalAppearance.h"

#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/RunTask.h"

#include <QDBusVariant>

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

constexpr const char *portalPath = "/org/freedesktop/portal/desktop";
constexpr const char *settings = "org.freedesktop.portal.Settings";

TEST(PortalAppearance, followsWhatTheDesktopSaysAndThatItComesLater) {
    const SessionBus bus;
    PortalAppearance appearance(bus.connection(), false);
    settle();
    EXPECT_FALSE(appearance.isLight() || appearance.reducesMotion());
    ServiceDouble portal(bus, "org.freedesktop.portal.Desktop", portalPath, settings);
    portal.addMethod("Read", "ss", "v",
                     "ret = {'color-scheme': dbus.UInt32(2, variant_level=1), "
                     "'enable-animations': dbus.Boolean(False, variant_level=1)}[args[1]]");
    const auto change = [&](const char *group, const char *key, const QVariant &value) {
        portal.emitSignal(portalPath, settings, "SettingChanged", "ssv",
                          {group, key, QVariant::fromValue(QDBusVariant(value))});
    };
    PortalAppearance later(bus.connection(), false);
    EXPECT_TRUE(eventually([&] { return later.isLight() && later.reducesMotion(); }));
    change("org.gnome.desktop.interface", "enable-animations", true);
    EXPECT_TRUE(eventually([&] { return later.isLight() && !later.reducesMotion(); }));
    change("org.freedesktop.appearance", "reduced-motion", 1u);
    change("org.freedesktop.appearance", "color-scheme", 1u);
    EXPECT_TRUE(eventually([&] { return !appearance.isLight() && appearance.reducesMotion(); }));
}

} // namespace
} // namespace vantrell::testing
