// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/MovieStitcher.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/MovieWriter.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace vantrell::testing {
namespace {

// A movie whose pictures nobody can decode: joins and facts do not need to.
void writeUndecodable(const std::filesystem::path &path, double seconds) {
    auto writer = *MovieWriter::create(path);
    const TrackId track =
        writer->addVideoTrack({.size = {64, 64}, .timeScale = 90000, .decoderConfiguration = {1, 2, 3}});
    const std::vector<std::uint8_t> data(100, 7);
    ASSERT_TRUE(writer->append(track, {.data = data, .isKey = true}));
    const TrackEnd ends[] = {{track, std::int64_t(seconds * 90000)}};
    ASSERT_TRUE(writer->finish(ends));
}

TEST(MovieStitcher, joinsIntoANewCaptureFileAndLeavesTheSegments) {
    const TemporaryFolder folder;
    const ScopedEnvironment data("XDG_DATA_HOME", folder.path().string());
    writeUndecodable(folder / "a.mov", 0.5);
    writeUndecodable(folder / "b.mov", 0.25);
    const auto joined = runTask(MovieStitcher::stitch({folder / "a.mov", folder / "b.mov"}, {}));
    ASSERT_TRUE(joined) << description(joined.error());
    EXPECT_EQ(joined->parent_path(), CaptureStorage::directory());
    EXPECT_EQ(joined->extension(), ".mov");
    EXPECT_NEAR(readMovieFacts(*joined)->durationMs, 750, 1e-6);
    EXPECT_TRUE(std::filesystem::exists(folder / "a.mov"));
    EXPECT_FALSE(runTask(MovieStitcher::posterFrame(*joined, {})));
}

TEST(MovieStitcher, failsWithWhatWentWrong) {
    const TemporaryFolder folder;
    const ScopedEnvironment data("XDG_DATA_HOME", folder.path().string());
    const auto nothing = runTask(MovieStitcher::stitch({}, {}));
    ASSERT_FALSE(nothing);
    EXPECT_EQ(description(nothing.error()), "Could not encode the capture");
    const auto missing = runTask(MovieStitcher::stitch({folder / "none.mov"}, {}));
    ASSERT_FALSE(missing);
    EXPECT_EQ(std::get<PlatformError>(missing.error()).code, ENOENT);

    writeUndecodable(folder / "a.mov", 0.5);
    std::stop_source stopped;
    stopped.request_stop();
    const auto cancelled = runTask(MovieStitcher::stitch({folder / "a.mov"}, stopped.get_token()));
    ASSERT_FALSE(cancelled);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(cancelled.error()));
    EXPECT_TRUE(eventually([] { return std::filesystem::is_empty(CaptureStorage::directory()); }));
}

} // namespace
} // namespace vantrell::testing
