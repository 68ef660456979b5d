// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieJoin.h"

#include "Media/Movie/MovieIndex.h"
#include "Support/AtomicFile.h"
#include "SystemCallFaults.h"
#include "TestClip.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <numbers>

namespace vantrell::testing {

namespace {

using Paths = std::vector<std::filesystem::path>;

constexpr double beepAt = 0.1;
constexpr double beepLength = 0.05;

/// Silence but for a short loud beep.
Sound encodeBeep(double seconds) {
    return encodeSound(seconds, [](double time) {
        const bool isOn = time >= beepAt && time < beepAt + beepLength;
        return isOn ? 0.8F * float(std::sin(2 * std::numbers::pi * 1000 * (time - beepAt))) : 0.0F;
    });
}

/// The first loud sample from `fromSeconds` on; the coder smears a little of it ahead.
double beepOnset(const DecodedMovie::Stream &stream, double fromSeconds) {
    for (std::size_t i = 0; i < stream.samples.size(); ++i)
        if (stream.sampleTimes[i] >= fromSeconds && std::abs(stream.samples[i]) > 0.3F)
            return stream.sampleTimes[i];
    return -1;
}

/// Where the sample shown at `seconds` stands when samples are counted from the start of the sound.
double countedTime(const DecodedMovie::Stream &stream, double seconds) {
    std::size_t index = 0;
    while (index < stream.sampleTimes.size() && stream.sampleTimes[index] < seconds - 1e-9)
        ++index;
    return stream.startSeconds + double(index) / stream.sampleRate;
}

int entryCountOf(const std::filesystem::path &folder) {
    return int(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// A segment of pictures, 60 a second, from luma `base` on, with a beep on each of its sounds.
void writeSegment(const std::filesystem::path &path, double seconds, int base, int sounds) {
    const int count = int(seconds * 60);
    const Pictures pictures =
        encodePictures({.count = count, .luma = [base](int i) { return base + i % 50; }});
    writeMovie(path, pictures, std::vector<Sound>(std::size_t(sounds), encodeBeep(seconds)), seconds);
}

TEST(MovieJoin, keepsEveryPictureAndEverySoundAtItsTime) {
    const TemporaryFolder folder;
    // Lengths that fit neither a picture nor a packet of sound.
    const std::vector<double> lengths{0.517, 0.333, 0.741};
    Paths sources;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        sources.push_back(folder / (std::to_string(i) + ".mov"));
        writeSegment(sources.back(), lengths[i], 50 + int(i) * 60, 2);
    }
    const auto summary = joinMovies(sources, folder / "joined.mov");
    ASSERT_TRUE(summary);
    EXPECT_NEAR(summary->durationMs, 1591, 0.05);
    EXPECT_EQ(entryCountOf(folder.path()), 4);

    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 3U);
    EXPECT_NEAR(movie.durationSeconds, 1.591, 1e-4);
    double cursor = 0;
    std::size_t next = 0;
    for (std::size_t segment = 0; segment < lengths.size(); ++segment) {
        for (int i = 0; i < int(lengths[segment] * 60); ++i, ++next) {
            const DecodedMovie::Picture &picture = movie.streams[0].pictures.at(next);
            EXPECT_NEAR(picture.seconds, cursor + i / 60.0, 2 * videoTick);
            EXPECT_NEAR(picture.luma, 50 + int(segment) * 60 + i % 50, 3);
        }
        for (const std::size_t sound : {1, 2})
            EXPECT_NEAR(beepOnset(movie.streams[sound], cursor), cursor + beepAt, 0.001);
        cursor += lengths[segment];
        // The last picture stands until the segment's end.
        EXPECT_NEAR(movie.streams[0].pictures.at(next - 1).endSeconds, cursor, 2 * videoTick);
    }
    EXPECT_EQ(next, movie.streams[0].pictures.size());
    EXPECT_NEAR(movie.streams[1].sampleTimes.front(), 0, 1e-6);
}

TEST(MovieJoin, doesNotDriftOverManyJoints) {
    const TemporaryFolder folder;
    writeSegment(folder / "segment.mov", 0.337, 60, 1);
    const Paths sources(40, folder / "segment.mov");
    ASSERT_TRUE(joinMovies(sources, folder / "joined.mov"));
    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    for (int joint = 0; joint < 40; ++joint) {
        const double onset = beepOnset(movie.streams[1], joint * 0.337);
        EXPECT_NEAR(onset, joint * 0.337 + beepAt, 0.001);
        // A player that only counts samples is off by half a packet at most.
        EXPECT_NEAR(countedTime(movie.streams[1], onset), onset, 0.0108) << "joint " << joint;
    }
}

TEST(MovieJoin, fillsASegmentWithoutSoundWithSilence) {
    const TemporaryFolder folder;
    writeSegment(folder / "a.mov", 0.4, 60, 2);
    writeSegment(folder / "b.mov", 0.55, 60, 1);
    writeSegment(folder / "c.mov", 0.5, 60, 0);
    writeSegment(folder / "d.mov", 0.3, 60, 2);
    ASSERT_TRUE(joinMovies(Paths{folder / "a.mov", folder / "b.mov", folder / "c.mov", folder / "d.mov"},
                           folder / "joined.mov"));
    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 3U);
    EXPECT_NEAR(movie.durationSeconds, 1.75, 1e-4);
    const DecodedMovie::Stream &first = movie.streams[1];
    const DecodedMovie::Stream &second = movie.streams[2];
    EXPECT_NEAR(beepOnset(first, 0.4), 0.5, 0.001);
    EXPECT_NEAR(beepOnset(first, 0.6), 1.55, 0.001);
    EXPECT_NEAR(beepOnset(second, 0.3), 1.55, 0.001);
    EXPECT_LT(second.peak(0.42, 1.4), 0.01F);
    EXPECT_NEAR(countedTime(second, 1.55), 1.55, 0.0108);
}

TEST(MovieJoin, startsASoundThatComesWithALaterSegmentThere) {
    const TemporaryFolder folder;
    writeSegment(folder / "a.mov", 0.5, 60, 0);
    writeSegment(folder / "b.mov", 0.5, 60, 1);
    ASSERT_TRUE(joinMovies(Paths{folder / "a.mov", folder / "b.mov"}, folder / "joined.mov"));
    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    EXPECT_NEAR(movie.streams[1].startSeconds, 0.5, 0.001);
    EXPECT_NEAR(beepOnset(movie.streams[1], 0), 0.6, 0.001);
}

TEST(MovieJoin, joinsSegmentsOfDifferentSizes) {
    const TemporaryFolder folder;
    writeMovie(folder / "a.mov", encodePictures({.size = {64, 64}, .count = 10}), {}, 0.2);
    writeMovie(folder / "b.mov", encodePictures({.size = {128, 96}, .count = 10}), {}, 0.2);
    ASSERT_TRUE(
        joinMovies(Paths{folder / "a.mov", folder / "b.mov", folder / "a.mov"}, folder / "joined.mov"));
    const auto index = readMovieIndex(*DiskFile::openForReading(folder / "joined.mov"));
    ASSERT_TRUE(index);
    EXPECT_EQ(index->tracks.at(0).description.sampleDescriptions.size(), 2U);
    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams[0].pictures.size(), 30U);
    EXPECT_EQ(movie.streams[0].pictures[5].width, 64);
    EXPECT_EQ(movie.streams[0].pictures[15].width, 128);
    EXPECT_EQ(movie.streams[0].pictures[25].width, 64);
}

TEST(MovieJoin, joinsReorderedPicturesInTheirOrder) {
    const TemporaryFolder folder;
    writeMovie(folder / "a.mov", encodePictures({.count = 20, .bFrames = 2}), {}, 0.35);
    ASSERT_TRUE(joinMovies(Paths{folder / "a.mov", folder / "a.mov"}, folder / "joined.mov"));
    const DecodedMovie movie = decodeMovie(folder / "joined.mov");
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams[0].pictures.size(), 40U);
    for (std::size_t i = 0; i < 40; ++i)
        EXPECT_NEAR(movie.streams[0].pictures[i].seconds, (i < 20 ? 0 : 0.35) + double(i % 20) / 60,
                    2 * videoTick);
}

TEST(MovieJoin, clearsAwayWhatAKilledJoinLeft) {
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileAtomically(folder / "a.mov.part", "abandoned"));
    ASSERT_TRUE(writeFileAtomically(folder / "b.mov.part", "under way"));
    const auto underWay = *DiskFile::openForWriting(folder / "b.mov.part");
    ASSERT_TRUE(underWay.lock());
    removeAbandonedJoins(folder.path());
    EXPECT_FALSE(std::filesystem::exists(folder / "a.mov.part"));
    EXPECT_TRUE(std::filesystem::exists(folder / "b.mov.part"));
}

TEST(MovieJoin, failsWithoutATraceAndWithoutTouchingTheSources) {
    const TemporaryFolder folder;
    writeSegment(folder / "a.mov", 0.3, 60, 1);
    const std::string whole = *readFile(folder / "a.mov");
    ASSERT_TRUE(writeFileAtomically(folder / "cut.mov", whole.substr(0, whole.size() - 100)));

    const auto missing = joinMovies(Paths{folder / "a.mov", folder / "none.mov"}, folder / "joined.mov");
    ASSERT_FALSE(missing);
    EXPECT_EQ(std::get<PlatformError>(missing.error()).code, ENOENT);
    const auto damaged = joinMovies(Paths{folder / "a.mov", folder / "cut.mov"}, folder / "joined.mov");
    ASSERT_FALSE(damaged);
    EXPECT_EQ(std::get<PlatformError>(damaged.error()).domain, "movie");
    const auto nothing = joinMovies(Paths{}, folder / "joined.mov");
    ASSERT_FALSE(nothing);
    EXPECT_TRUE(std::holds_alternative<NothingToJoin>(nothing.error()));
    std::stop_source stopped;
    stopped.request_stop();
    const auto cancelled = joinMovies(Paths{folder / "a.mov"}, folder / "joined.mov", stopped.get_token());
    ASSERT_FALSE(cancelled);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(cancelled.error()));

    for (int call = 1;; ++call) {
        SystemCallFaults::arm(SystemCallFaults::Kind::failFrom, call, ENOSPC);
        const auto full = joinMovies(Paths{folder / "a.mov", folder / "a.mov"}, folder / "joined.mov");
        const int made = SystemCallFaults::callCount();
        SystemCallFaults::disarm();
        if (full || made < call)
            break;
        EXPECT_TRUE(isDiskFull(std::get<PlatformError>(full.error()))) << "call " << call;
        EXPECT_EQ(entryCountOf(folder.path()), 2) << "call " << call;
        ASSERT_LT(call, 100);
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "joined.mov"));
    EXPECT_EQ(*readFile(folder / "a.mov"), whole);
}

} // namespace
} // namespace vantrell::testing
