// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieRecovery.h"

#include "Media/Movie/MovieJournal.h"
#include "SyntheticMovie.h"
#include "SystemCallFaults.h"
#include "TestClip.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <random>
#include <thread>

namespace vantrell::testing {

namespace {

const MovieWriter::Options eager{.flushInterval = std::chrono::milliseconds(2),
                                 .syncInterval = std::chrono::milliseconds(4)};

/// The exit code, or minus the signal that ended the process.
int runCrashingWriter(const std::string &mode, const std::filesystem::path &movie, int call) {
    ChildProcess process({CRASHING_WRITER, mode, movie.string(), std::to_string(call)});
    return process.waitForExit().value_or(-1000);
}

/// An unfinished movie of real pictures, one chunk a flush.
void leaveUnfinished(const std::filesystem::path &path, int count, MovieWriter::Options options = eager) {
    const Pictures pictures = encodePictures({.count = count});
    auto writer = *MovieWriter::create(path, std::move(options));
    const TrackId video = writer->addVideoTrack(pictures.format);
    for (const OwnedSample &sample : pictures.samples) {
        ASSERT_TRUE(writer->append(video, sample.view()));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TEST(MovieRecovery, makesAnOrdinaryMovieOfAnUnfinishedOne) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    leaveUnfinished(path, 30, {.elapsed = [] { return 2.5; }});
    EXPECT_EQ(unfinishedMovies(folder.path()), std::vector{path});
    const auto summary = recoverMovie(path);
    ASSERT_TRUE(summary) << summary.error().message;
    // The picture stood still after the last sample; the journal knows until when.
    EXPECT_DOUBLE_EQ(summary->durationMs, 2500);
    EXPECT_TRUE(unfinishedMovies(folder.path()).empty());
    const DecodedMovie movie = decodeMovie(path);
    EXPECT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 1U);
    EXPECT_EQ(movie.streams[0].pictures.size(), 30U);
    EXPECT_EQ(recoverMovie(path).error().code, ENOENT);
}

TEST(MovieRecovery, leavesAMovieAloneWhileItIsWritten) {
    const TemporaryFolder folder;
    const auto writer = *MovieWriter::create(folder / "movie.mov");
    EXPECT_TRUE(unfinishedMovies(folder.path()).empty());
    const auto refused = recoverMovie(folder / "movie.mov");
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, EWOULDBLOCK);
}

TEST(MovieRecovery, clearsAwayWhatHoldsNothing) {
    const TemporaryFolder folder;
    {
        const auto writer = *MovieWriter::create(folder / "empty.mov");
    }
    {
        std::ofstream((folder / "bare.mov.journal").string());
    }
    leaveUnfinished(folder / "gone.mov", 5);
    std::filesystem::remove(folder / "gone.mov");
    EXPECT_EQ(unfinishedMovies(folder.path()).size(), 3U);
    for (const char *name : {"empty.mov", "bare.mov", "gone.mov"}) {
        const auto summary = recoverMovie(folder / name);
        ASSERT_TRUE(summary) << name << summary.error().message;
        EXPECT_EQ(summary->bytes, 0U);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(MovieRecovery, keepsDataWhoseJournalIsUnreadable) {
    const TemporaryFolder folder;
    leaveUnfinished(folder / "movie.mov", 5);
    std::ofstream((folder / "movie.mov.journal").string(), std::ios::trunc) << std::string(5000, 'x');
    const auto failed = recoverMovie(folder / "movie.mov");
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().domain, "movie");
    EXPECT_GT(std::filesystem::file_size(folder / "movie.mov"), 100U);
    EXPECT_TRUE(std::filesystem::exists(folder / "movie.mov.journal"));
}

/// A power cut keeps any prefix of either file, or leaves zeros where bytes were on their way to the disk.
TEST(MovieRecovery, takesWhatIsWholeOfTornFiles) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    const auto journal = MovieJournal::pathFor(path);
    {
        // Only what the first synchronisation takes is noted as durable; all chunks behind it are checked.
        auto writer = *MovieWriter::create(
            path, {.flushInterval = std::chrono::milliseconds(1), .syncInterval = std::chrono::hours(1)});
        const std::vector<TrackId> tracks = SyntheticMovie::addTracks(*writer);
        for (int number = 0; number < 40; ++number) {
            for (const TrackId track : tracks)
                ASSERT_TRUE(SyntheticMovie::append(*writer, track, number));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    const TemporaryFolder saved;
    for (const auto &file : {path, journal})
        std::filesystem::copy_file(file, saved / file.filename().string());
    const auto noted = readMovieJournal(*lockMovieJournal(journal));
    ASSERT_TRUE(noted);
    std::mt19937 random(7);
    for (int round = 0; round < 120; ++round) {
        for (const auto &file : {path, journal})
            std::filesystem::copy_file(saved / file.filename().string(), file,
                                       std::filesystem::copy_options::overwrite_existing);
        const auto &torn = round % 2 == 0 ? path : journal;
        const std::uint64_t size = std::filesystem::file_size(torn);
        // What is noted as durable cannot get lost.
        const std::uint64_t first = torn == journal ? 4096 : noted->synced;
        const std::uint64_t cut = first + random() % (size - first);
        std::filesystem::resize_file(torn, cut);
        if (round % 4 < 2)
            std::filesystem::resize_file(torn, size);
        const auto summary = recoverMovie(path);
        ASSERT_TRUE(summary) << summary.error().message;
        if (summary->bytes == 0)
            continue;
        const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
        ASSERT_EQ(contents.fault, "") << "round " << round << " cut at " << cut << " of " << size;
        if (torn == path)
            ASSERT_GE(contents.counts[0], int(40 * cut / size) - 8) << "cut at " << cut << " of " << size;
    }
}

TEST(MovieRecovery, recoversAfterAKillAtEverySystemCall) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    int mostRecovered = 0;
    int call = 1;
    for (;; ++call) {
        ASSERT_LT(call, 500);
        const int result = runCrashingWriter("write", path, call);
        if (result == 0)
            break;
        ASSERT_EQ(result, -SIGKILL);
        if (std::filesystem::exists(MovieJournal::pathFor(path))) {
            const auto summary = recoverMovie(path);
            ASSERT_TRUE(summary) << "call " << call << ": " << summary.error().message;
        }
        if (std::filesystem::exists(path)) {
            const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
            ASSERT_EQ(contents.fault, "") << "call " << call;
            mostRecovered = std::max(mostRecovered, contents.counts[0]);
        }
        std::filesystem::remove(path);
    }
    // The last kills come while the movie is being finished; how many calls that takes, and how much
    // was on the disk before, differs from run to run.
    EXPECT_GE(mostRecovered, 10);
    EXPECT_GT(call, 20);
    EXPECT_EQ(SyntheticMovie::read(path).counts[0], 40);
}

TEST(MovieRecovery, canBeKilledItself) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    const auto journal = MovieJournal::pathFor(path);
    leaveUnfinished(path, 30);
    const TemporaryFolder saved;
    for (const auto &file : {path, journal})
        std::filesystem::copy_file(file, saved / file.filename().string());
    int kills = 0;
    while (runCrashingWriter("recover", path, kills + 1) != 0) {
        ASSERT_LT(++kills, 50);
        const auto summary = recoverMovie(path);
        ASSERT_TRUE(summary) << summary.error().message;
        EXPECT_EQ(decodeMovie(path).streams.at(0).pictures.size(), 30U);
        for (const auto &file : {path, journal})
            std::filesystem::copy_file(saved / file.filename().string(), file,
                                       std::filesystem::copy_options::overwrite_existing);
    }
    EXPECT_GE(kills, 4);
}

TEST(MovieRecovery, losesLessThanASecondWhenKilledAtAnyMoment) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    const auto progress = folder / "progress";
    constexpr std::size_t progressBytes = 3600 * sizeof(double);
    std::mt19937 random(std::random_device{}());
    for (int round = 0; round < 4; ++round) {
        {
            std::ofstream(progress.string(), std::ios::trunc);
        }
        std::filesystem::resize_file(progress, progressBytes);
        ChildProcess process({CRASHING_WRITER, "record", path.string(), progress.string()});
        ASSERT_TRUE(eventually([&progress] {
            double first = 0;
            std::ifstream(progress.string()).read(reinterpret_cast<char *>(&first), sizeof first);
            return first > 0;
        }));
        // The moment of the kill is the input of this test, not something that it waits for.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500 + random() % 1500));
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const double killed = double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
        process.signal(SIGKILL);
        ASSERT_EQ(process.waitForExit(), -SIGKILL);

        std::vector<double> handedOver(3600);
        std::ifstream(progress.string()).read(reinterpret_cast<char *>(handedOver.data()), progressBytes);
        const auto summary = recoverMovie(path);
        ASSERT_TRUE(summary) << summary.error().message;
        const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
        EXPECT_EQ(contents.fault, "");
        const auto due = std::ranges::count_if(
            handedOver, [killed](double time) { return time > 0 && time < killed - 1.0; });
        EXPECT_GT(due, 10);
        for (const int count : contents.counts)
            EXPECT_GE(count, due);
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace vantrell::testing
