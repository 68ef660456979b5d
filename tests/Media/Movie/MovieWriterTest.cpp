// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieWriter.h"

#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/PosterFrame.h"
#include "SyntheticMovie.h"
#include "TestClip.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

std::unique_ptr<MovieWriter> createWriter(const std::filesystem::path &path) {
    auto writer = MovieWriter::create(path);
    EXPECT_TRUE(writer) << writer.error().message;
    return std::move(*writer);
}

TEST(MovieWriter, writesAMovieThatOthersDecodeExactly) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    const Pictures pictures = encodePictures();
    const Sound microphone = encodeTone(1.5);
    Sound system = encodeTone(1.2, 880);
    system.format.name = "System Audio";
    {
        const auto writer = createWriter(path);
        const TrackId video = writer->addVideoTrack(pictures.format);
        const TrackId first = writer->addAudioTrack(microphone.format);
        const TrackId second = writer->addAudioTrack(system.format);
        appendAll(*writer, second, system.samples);
        appendAll(*writer, video, pictures.samples);
        appendAll(*writer, first, microphone.samples);
        const TrackEnd ends[] = {{video, 135000}, {first, 72000}, {second, 48000}};
        const auto summary = writer->finish(ends);
        ASSERT_TRUE(summary) << summary.error().message;
        EXPECT_DOUBLE_EQ(summary->durationMs, 1500);
        EXPECT_EQ(summary->bytes, std::filesystem::file_size(path));
    }
    EXPECT_FALSE(std::filesystem::exists(MovieJournal::pathFor(path)));

    const DecodedMovie movie = decodeMovie(path);
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 3U);
    EXPECT_NEAR(movie.durationSeconds, 1.5, 1e-4);
    const DecodedMovie::Stream &video = movie.streams[0];
    ASSERT_EQ(video.pictures.size(), 60U);
    for (int i = 0; i < 60; ++i) {
        EXPECT_NEAR(video.pictures[std::size_t(i)].seconds, i / 60.0, videoTick);
        EXPECT_NEAR(video.pictures[std::size_t(i)].luma, 40 + i, 2);
    }
    // The last picture came at 0.983 s and stands until the end.
    EXPECT_NEAR(video.pictures.back().endSeconds, 1.5, videoTick);
    EXPECT_EQ(movie.streams[1].name, "Microphone");
    EXPECT_EQ(movie.streams[2].name, "System Audio");
    // The encoder's priming is skipped: sound begins at zero, with sound.
    EXPECT_NEAR(movie.streams[1].sampleTimes.front(), 0, 1e-9);
    EXPECT_GT(movie.streams[1].peak(0, 0.02), 0.2F);
    EXPECT_NEAR(movie.streams[2].durationSeconds, 1.0, 1e-4);

    const auto facts = readMovieFacts(path);
    ASSERT_TRUE(facts) << facts.error().message;
    EXPECT_DOUBLE_EQ(facts->durationMs, 1500);
    ASSERT_EQ(facts->tracks.size(), 3U);
    EXPECT_EQ(facts->tracks[0].size, (PixelSize{64, 64}));
    EXPECT_EQ(facts->tracks[0].sampleCount, 60);
    EXPECT_EQ(facts->tracks[2].name, "System Audio");
    EXPECT_NEAR(facts->tracks[2].durationMs, 1000, 0.02);
}

TEST(MovieWriter, holdsTheOnlyPictureUntilTheStop) {
    const TemporaryFolder folder;
    const Pictures pictures = encodePictures({.count = 1});
    const auto writer = createWriter(folder / "movie.mov");
    const TrackId video = writer->addVideoTrack(pictures.format);
    appendAll(*writer, video, pictures.samples);
    const TrackEnd ends[] = {{video, 90000 * 7201 + 77}};
    ASSERT_TRUE(writer->finish(ends));
    const DecodedMovie movie = decodeMovie(folder / "movie.mov");
    EXPECT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 1U);
    EXPECT_NEAR(movie.durationSeconds, 7201 + 77 * videoTick, 1e-5);
    EXPECT_EQ(movie.streams[0].pictures.size(), 1U);
}

TEST(MovieWriter, keepsTheOrderOfReorderedPictures) {
    const TemporaryFolder folder;
    const Pictures pictures = encodePictures({.count = 30, .bFrames = 2});
    ASSERT_NE(pictures.samples[1].pts, pictures.samples[1].dts);
    const auto writer = createWriter(folder / "movie.mov");
    const TrackId video = writer->addVideoTrack(pictures.format);
    appendAll(*writer, video, pictures.samples);
    const TrackEnd ends[] = {{video, 45000}};
    ASSERT_TRUE(writer->finish(ends));
    const DecodedMovie movie = decodeMovie(folder / "movie.mov");
    ASSERT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams[0].pictures.size(), 30U);
    for (int i = 0; i < 30; ++i) {
        EXPECT_NEAR(movie.streams[0].pictures[std::size_t(i)].seconds, i / 60.0, videoTick);
        EXPECT_NEAR(movie.streams[0].pictures[std::size_t(i)].luma, 40 + i, 3);
    }
}

TEST(MovieWriter, startsALateTrackLate) {
    const TemporaryFolder folder;
    const Pictures pictures = encodePictures();
    Sound sound = encodeTone(0.5);
    for (OwnedSample &sample : sound.samples)
        sample.pts = sample.dts = sample.pts + 12000;
    const auto writer = createWriter(folder / "movie.mov");
    const TrackId video = writer->addVideoTrack(pictures.format);
    const TrackId audio = writer->addAudioTrack(sound.format);
    appendAll(*writer, video, pictures.samples);
    appendAll(*writer, audio, sound.samples);
    const TrackEnd ends[] = {{video, 90000}, {audio, 36000}};
    ASSERT_TRUE(writer->finish(ends));
    const DecodedMovie movie = decodeMovie(folder / "movie.mov");
    ASSERT_EQ(movie.error, "");
    EXPECT_NEAR(movie.streams[1].startSeconds, 0.25, 1e-3);
    EXPECT_GT(movie.streams[1].peak(0.25, 0.27), 0.2F);
    EXPECT_EQ(movie.streams[1].peak(0, 0.249), 0.0F);
}

TEST(MovieWriter, survivesAClockThatStepsBack) {
    const TemporaryFolder folder;
    Pictures pictures = encodePictures({.count = 10});
    pictures.samples[5].pts = pictures.samples[5].dts = pictures.samples[4].dts - 3000;
    const auto writer = createWriter(folder / "movie.mov");
    const TrackId video = writer->addVideoTrack(pictures.format);
    appendAll(*writer, video, pictures.samples);
    ASSERT_TRUE(writer->finish({}));
    const DecodedMovie movie = decodeMovie(folder / "movie.mov");
    EXPECT_EQ(movie.error, "");
    EXPECT_NEAR(movie.durationSeconds, 10 / 60.0, 1e-3);
}

TEST(MovieWriter, keepsWhatComesWhileTheDiskIsWrittenTo) {
    const TemporaryFolder folder;
    for (int round = 0; round < 20; ++round) {
        const auto path = folder / (std::to_string(round) + ".mov");
        auto writer = *MovieWriter::create(
            path, {.flushInterval = std::chrono::milliseconds(1), .bufferLimit = std::size_t(256) << 10});
        const std::vector<TrackId> tracks = SyntheticMovie::addTracks(*writer);
        for (int number = 0; number < 500; ++number)
            ASSERT_TRUE(SyntheticMovie::append(*writer, tracks[0], number));
        ASSERT_TRUE(writer->finish({}));
        const SyntheticMovie::Contents contents = SyntheticMovie::read(path);
        ASSERT_EQ(contents.fault, "");
        ASSERT_EQ(contents.counts[0], 500);
    }
}

TEST(MovieWriter, refusesToReplaceAMovieAndLeavesNothingOnFailure) {
    const TemporaryFolder folder;
    const auto path = folder / "movie.mov";
    {
        const auto writer = createWriter(path);
        const auto second = MovieWriter::create(path);
        ASSERT_FALSE(second);
        EXPECT_EQ(second.error().code, EEXIST);
    }
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_FALSE(MovieWriter::create(folder / "missing/movie.mov"));
    // A journal in the way: the movie that was begun goes again.
    std::filesystem::create_directory(MovieJournal::pathFor(folder / "other.mov"));
    EXPECT_FALSE(MovieWriter::create(folder / "other.mov"));
    EXPECT_FALSE(std::filesystem::exists(folder / "other.mov"));
}

TEST(PosterFrame, isTheFirstPictureFittedWithItsColours) {
    const TemporaryFolder folder;
    // Luma 235 is white, 16 black, in limited range.
    const Pictures pictures = encodePictures(
        {.size = {2048, 512}, .count = 2, .luma = [](int picture) { return picture == 0 ? 235 : 16; }});
    const auto writer = createWriter(folder / "movie.mov");
    const TrackId video = writer->addVideoTrack(pictures.format);
    appendAll(*writer, video, pictures.samples);
    ASSERT_TRUE(writer->finish({}));
    const auto poster = decodePosterFrame(folder / "movie.mov");
    ASSERT_TRUE(poster) << poster.error().message;
    EXPECT_EQ(poster->size(), QSize(1024, 256));
    const QColor colour = poster->pixelColor(512, 128);
    EXPECT_GE(std::min({colour.red(), colour.green(), colour.blue()}), 253) << colour.name().toStdString();
    EXPECT_FALSE(decodePosterFrame(folder / "none.mov"));
}

} // namespace
} // namespace vantrell::testing
