// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureSettings.h"

#include "Support/AtomicFile.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(CaptureSettings, keepsADamagedFileBesideAndSeesWhatOthersWrite) {
    TemporaryFolder folder;
    const std::filesystem::path file = folder / "VantrellCapture/settings.ini";
    std::filesystem::create_directories(file.parent_path());
    const std::string damaged = std::string("[General]\nmicEnabled=true\n\xff\xfe", 28) + '\0';
    ASSERT_TRUE(writeFileAtomically(file, damaged));
    CaptureSettings settings(file);
    EXPECT_EQ(readFile(folder / "VantrellCapture/settings.ini.unreadable").value_or(""), damaged);
    EXPECT_FALSE(settings.micEnabled());
    EXPECT_TRUE(settings.separateCursor());
    EXPECT_EQ(settings.countdownSeconds(), 0);

    settings.setMic(true, "built-in");
    settings.setMic(true, std::nullopt);
    EXPECT_EQ(settings.store().string("micDeviceId"), std::nullopt);
    int changes = 0;
    const Observation observation = settings.observe([&changes] { ++changes; });
    // Another process, by renaming as well as in place.
    for (const int seconds : {3, 5}) {
        changes = 0;
        // Of different lengths: two writes in the same few milliseconds are told apart by nothing else.
        const std::string text = "[General]\ncountdownSeconds=" + std::to_string(seconds) +
                                 std::string(std::size_t(seconds), '\n');
        ASSERT_TRUE(writeFileAtomically(file, text));
        EXPECT_TRUE(eventually([&] { return changes > 0 && settings.countdownSeconds() == seconds; }));
    }
    EXPECT_FALSE(settings.micEnabled());
}

} // namespace

} // namespace vantrell::testing
