// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Settings.h"

#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(Settings, keepsValuesOverARestartAndFallsBackToRegisteredDefaults) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "config/settings.ini";
    {
        Settings settings(file);
        settings.registerDefault("autoCamera", true);
        EXPECT_TRUE(settings.boolean("autoCamera"));
        EXPECT_FALSE(settings.boolean("micEnabled"));
        EXPECT_EQ(settings.string("selectedProjectId"), std::nullopt);
        settings.setBoolean("autoCamera", false);
        settings.setBoolean("micEnabled", true);
        settings.setString("selectedProjectId", "projet é, 1");
        settings.setNumber("area.1.x", -12.5);
        settings.setString("micDeviceId", "gone");
        settings.setString("micDeviceId", std::nullopt);
    }
    Settings settings(file);
    settings.registerDefault("autoCamera", true);
    EXPECT_FALSE(settings.boolean("autoCamera"));
    EXPECT_TRUE(settings.boolean("micEnabled"));
    EXPECT_EQ(settings.string("selectedProjectId"), "projet é, 1");
    EXPECT_EQ(settings.number("area.1.x"), -12.5);
    EXPECT_EQ(settings.number("selectedProjectId"), std::nullopt);
    EXPECT_EQ(settings.string("micDeviceId"), std::nullopt);
}

} // namespace
} // namespace vantrell::testing
