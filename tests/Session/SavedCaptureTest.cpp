// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/SavedCapture.h"

#include "TestSupport/Disk/FailingDisk.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(SavedCapture, isWholeOnOneOfTwoFileSystemsWhicheverCallOfTheDiskFails) {
    int kept = 0;
    for (int call = 1;; ++call) {
        const TemporaryFolder home;
        const QTemporaryDir memory("/dev/shm/vantrell-test-XXXXXX");
        const std::filesystem::path other = memory.path().toStdString();
        CaptureResult capture{.fileURL = home / "film.mov"};
        writeTestFile(capture.fileURL, 100'000);
        const std::string contents = sha256Of(capture.fileURL);

        const FailingDisk disk(call, EIO);
        std::filesystem::path toldBefore;
        const auto saved =
            saveCapture(capture, other, [&toldBefore](const auto &place) { toldBefore = place; });
        EXPECT_EQ(toldBefore, other / "film.mov");
        if (saved) {
            EXPECT_EQ(saved->file, toldBefore);
            EXPECT_EQ(sha256Of(saved->file), contents);
            EXPECT_FALSE(std::filesystem::exists(capture.fileURL));
        } else {
            ++kept;
            EXPECT_EQ(sha256Of(capture.fileURL), contents) << saved.error().message;
            EXPECT_TRUE(std::filesystem::is_empty(other)) << saved.error().message;
        }
        if (!disk.hasFailed())
            break;
    }
    // At least: making the copy, the file's fsync, its name, opening its folder, the folder's fsync.
    EXPECT_GE(kept, 5);
}

} // namespace
} // namespace vantrell::testing
