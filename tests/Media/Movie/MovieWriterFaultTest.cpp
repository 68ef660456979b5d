// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieWriter.h"

#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieRecovery.h"
#include "SyntheticMovie.h"
#include "SystemCallFaults.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

namespace vantrell::testing {

namespace {

using Faults = SystemCallFaults;

struct Attempt {
    bool created = false;
    bool finished = false;
    /// Pictures taken before the first error.
    int accepted = 0;
    std::optional<PlatformError> error;
};

/// Writes a short movie with many flushes.
Attempt attemptMovie(const std::filesystem::path &path, int pictures = 40) {
    Attempt attempt;
    auto writer = MovieWriter::create(
        path, {.flushInterval = std::chrono::milliseconds(1), .syncInterval = std::chrono::milliseconds(2)});
    attempt.created = writer.has_value();
    if (!writer)
        return attempt;
    const std::vector<TrackId> tracks = SyntheticMovie::addTracks(**writer);
    for (; attempt.accepted < pictures && !attempt.error; ++attempt.accepted) {
        for (const TrackId track : tracks)
            if (const auto appended = SyntheticMovie::append(**writer, track, attempt.accepted); !appended)
                attempt.error = appended.error();
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
    const TrackEnd ends[] = {{tracks[0], std::int64_t(pictures) * SyntheticMovie::pictureTicks}};
    attempt.finished = (*writer)->finish(ends).has_value();
    return attempt;
}

/// After any failure there is a movie, or what a recovery needs, or nothing was begun.
void expectNothingLost(const std::filesystem::path &path, const Attempt &attempt, Faults::Kind kind,
                       int call) {
    if (!attempt.created) {
        EXPECT_FALSE(std::filesystem::exists(path)) << "call " << call;
        EXPECT_FALSE(std::filesystem::exists(MovieJournal::pathFor(path))) << "call " << call;
        return;
    }
    if (!attempt.finished) {
        const auto summary = recoverMovie(path);
        ASSERT_TRUE(summary) << "call " << call << ": " << summary.error().message;
    }
    if (!std::filesystem::exists(path))
        return;
    const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
    EXPECT_EQ(contents.fault, "") << "call " << call;
    // A failure that passes takes nothing: what was taken before it was reported is tried once more.
    if (attempt.finished && kind == Faults::Kind::failOnce)
        EXPECT_GE(contents.counts[0], attempt.accepted - (attempt.error ? 1 : 0)) << "call " << call;
}

void failEachCall(Faults::Kind kind, int error) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    for (int call = 1;; ++call) {
        ASSERT_LT(call, 1000);
        Faults::arm(kind, call, error);
        const Attempt attempt = attemptMovie(path);
        const int made = Faults::callCount();
        Faults::disarm();
        expectNothingLost(path, attempt, kind, call);
        std::filesystem::remove(path);
        std::filesystem::remove(MovieJournal::pathFor(path));
        if (made < call)
            break;
    }
}

TEST(MovieWriterFaults, losesNothingWhenAnyOneCallFails) {
    failEachCall(Faults::Kind::failOnce, EIO);
}

TEST(MovieWriterFaults, losesNothingWhenTheDiskFillsUpAtAnyCall) {
    failEachCall(Faults::Kind::failFrom, ENOSPC);
}

TEST(MovieWriterFaults, reportsAFullDiskAndStillFinishesTheMovie) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    auto writer = *MovieWriter::create(path, {.flushInterval = std::chrono::milliseconds(1)});
    const std::vector<TrackId> tracks = SyntheticMovie::addTracks(*writer);
    std::optional<PlatformError> error;
    for (int number = 0; number < 100000 && !error; ++number) {
        if (number == 50) {
            ASSERT_TRUE(
                eventually([&] { return std::filesystem::file_size(path) >= writer->bytesWritten(); }));
            Faults::arm(Faults::Kind::failFrom, 1, ENOSPC);
        }
        if (const auto appended = SyntheticMovie::append(*writer, tracks[0], number); !appended)
            error = appended.error();
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    // The reserve that the writer held is what makes this possible on a real disk.
    Faults::disarm();
    ASSERT_TRUE(error);
    EXPECT_TRUE(isDiskFull(*error));
    EXPECT_GT(writer->finalisationBytes(), 0U);
    const auto summary = writer->finish({});
    ASSERT_TRUE(summary) << summary.error().message;
    const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
    EXPECT_EQ(contents.fault, "");
    EXPECT_GE(contents.counts[0], 50);
    EXPECT_NEAR(contents.durationMs, contents.counts[0] * 1000 / 60.0, 1);
    EXPECT_FALSE(std::filesystem::exists(MovieJournal::pathFor(path)));
}

} // namespace
} // namespace vantrell::testing
