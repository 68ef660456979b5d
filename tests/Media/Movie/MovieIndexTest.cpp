// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieIndex.h"

#include "Media/Movie/ByteWriter.h"
#include "Media/Movie/MovieReader.h"
#include "Support/AtomicFile.h"
#include "TestClip.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace vantrell::testing {

namespace {

/// A short movie with sound, as bytes.
std::string movieBytes(const std::filesystem::path &path) {
    const Pictures pictures = encodePictures({.count = 20, .bFrames = 2});
    const Sound sound = encodeTone(0.3);
    auto writer = *MovieWriter::create(path);
    const TrackId video = writer->addVideoTrack(pictures.format);
    const TrackId audio = writer->addAudioTrack(sound.format);
    appendAll(*writer, video, pictures.samples);
    appendAll(*writer, audio, sound.samples);
    EXPECT_TRUE(writer->finish({}));
    return readFile(path).value_or("");
}

std::expected<MovieIndex, PlatformError> indexOf(const std::filesystem::path &path,
                                                 const std::string &bytes) {
    EXPECT_TRUE(writeFileAtomically(path, bytes));
    return readMovieIndex(*DiskFile::openForReading(path));
}

/// What every reader of an index may rely on.
void expectSane(const MovieIndex &index, std::size_t fileSize) {
    ASSERT_GT(index.timeScale, 0U);
    for (const MovieIndex::Track &track : index.tracks) {
        ASSERT_GT(track.description.timeScale, 0U);
        std::int64_t dts = 0;
        for (const MovieIndex::Sample &sample : track.samples) {
            ASSERT_LE(sample.offset + sample.size, fileSize);
            ASSERT_EQ(sample.dts, dts);
            ASSERT_GE(sample.description, 1);
            ASSERT_LE(sample.description, track.description.sampleDescriptions.size());
            dts += sample.duration;
        }
    }
}

TEST(MovieIndex, findsEachSampleWhereItWasWritten) {
    const TemporaryFolder folder;
    const Pictures pictures = encodePictures({.count = 20, .keyInterval = 7, .bFrames = 2});
    {
        auto writer = *MovieWriter::create(folder / "movie.mov");
        const TrackId video = writer->addVideoTrack(pictures.format);
        appendAll(*writer, video, pictures.samples);
        ASSERT_TRUE(writer->finish({}));
    }
    const auto file = *DiskFile::openForReading(folder / "movie.mov");
    const auto index = readMovieIndex(file);
    ASSERT_TRUE(index) << index.error().message;
    ASSERT_EQ(index->tracks.size(), 1U);
    const MovieIndex::Track &track = index->tracks[0];
    EXPECT_EQ(track.description.sampleDescriptions, describeTrack(pictures.format).sampleDescriptions);
    ASSERT_EQ(track.samples.size(), pictures.samples.size());
    const std::int64_t firstDts = pictures.samples[0].dts;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        const MovieIndex::Sample &sample = track.samples[i];
        const OwnedSample &written = pictures.samples[i];
        std::vector<std::uint8_t> data(sample.size);
        ASSERT_EQ(file.readAt(sample.offset, data), data.size());
        EXPECT_EQ(data, written.data);
        EXPECT_EQ(sample.dts, written.dts - firstDts);
        EXPECT_EQ(sample.compositionOffset, written.pts - written.dts);
        EXPECT_EQ(sample.isKey, written.isKey);
    }
}

TEST(MovieIndex, refusesEveryTruncation) {
    const TemporaryFolder folder;
    const std::string whole = movieBytes(folder / "movie.mov");
    ASSERT_TRUE(indexOf(folder / "cut.mov", whole));
    for (std::size_t size = 0; size < whole.size(); size += 1 + size % 41) {
        const auto index = indexOf(folder / "cut.mov", whole.substr(0, size));
        ASSERT_FALSE(index) << size;
        ASSERT_EQ(index.error().domain, "movie") << size;
    }
}

TEST(MovieIndex, staysInBoundsWhateverTheTablesSay) {
    const TemporaryFolder folder;
    const std::string whole = movieBytes(folder / "movie.mov");
    const std::size_t tables = whole.find("moov") - 4;
    std::mt19937 random(20260305);
    int accepted = 0;
    constexpr std::uint8_t nasty[] = {0, 1, 0x7f, 0x80, 0xff};
    for (int round = 0; round < 1500; ++round) {
        std::string mutated = whole;
        for (unsigned left = 1 + random() % 4; left > 0; --left) {
            const std::size_t place = tables + random() % (whole.size() - tables);
            mutated[place] = char(random() % 2 ? nasty[random() % 5] : random() & 0xff);
        }
        const auto index = indexOf(folder / "mutated.mov", mutated);
        if (!index)
            continue;
        ++accepted;
        expectSane(*index, mutated.size());
    }
    // Many bytes (dates, names) matter to nobody.
    EXPECT_GT(accepted, 25);
}

TEST(MovieIndex, refusesCountsThatNoBytesBack) {
    const TemporaryFolder folder;
    const std::string whole = movieBytes(folder / "movie.mov");
    for (const char *table : {"stsz", "stts", "ctts", "stss", "stsc", "stco"}) {
        std::string mutated = whole;
        const std::size_t count = whole.find(table) + (std::string(table) == "stsz" ? 12 : 8);
        mutated.replace(count, 4, "\xff\xff\xff\xf0");
        EXPECT_FALSE(indexOf(folder / "mutated.mov", mutated)) << table;
    }
    EXPECT_FALSE(indexOf(folder / "text.mov", "not a movie at all, but long enough for a header"));
    EXPECT_FALSE(readMovieFacts(folder / "none.mov"));
}

} // namespace
} // namespace vantrell::testing
