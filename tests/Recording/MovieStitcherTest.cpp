// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/MovieStitcher.h"

#include "Capture/CaptureStorage.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace vantrell::testing {

namespace {

TEST(MovieStitcher, failsWithWhatWentWrong) {
    const TemporaryFolder folder;
    const ScopedEnvironment data("XDG_DATA_HOME", folder.path().string());
    const auto nothing = runTask(MovieStitcher::stitch({}, {}));
    ASSERT_FALSE(nothing);
    EXPECT_EQ(description(nothing.error()), "Could not encode the capture");
    const auto missing = runTask(MovieStitcher::stitch({folder / "none.mov"}, {}));
    ASSERT_FALSE(missing);
    EXPECT_EQ(std::get<PlatformError>(missing.error()).code, ENOENT);

    std::stop_source stopped;
    stopped.request_stop();
    const auto cancelled = runTask(MovieStitcher::stitch({folder / "none.mov"}, stopped.get_token()));
    ASSERT_FALSE(cancelled);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(cancelled.error()));
    EXPECT_TRUE(eventually([] { return std::filesystem::is_empty(CaptureStorage::directory()); }));
}

} // namespace
} // namespace vantrell::testing
