// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/DiskSpace.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(DiskSpace, needsTwoGigabytesAndPassesWhenNobodyCanTell) {
    EXPECT_TRUE(isEnoughToRecord(2'000'000'000));
    EXPECT_FALSE(isEnoughToRecord(1'999'999'999));
    EXPECT_TRUE(checkFreeDiskSpace("/nowhere/at/all"));
    EXPECT_EQ(description(RecordingError::lowDiskSpace),
              "Not enough free disk space to record (2 GB needed)");
}

} // namespace
} // namespace vantrell::testing
