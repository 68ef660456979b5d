// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Movie/DecodedMovie.h"

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Encoding/EncoderTrial.h"
#include "Media/Encoding/X264Encoder.h"
#include "Media/H264/H264Units.h"
#include "Media/Movie/MovieWriter.h"
#include "Support/HostTime.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace vantrell {

namespace {

using testing::decodeMovie;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

/// A real encoder of libavcodec's that needs no graphics card: it stands in for the cards' ones, which take
/// the same way.
LibavEncoder::Codec libavEncoder(std::vector<std::pair<std::string, std::string>> changed = {}) {
    LibavEncoder::Codec codec{
        .name = "libx264",
        .options = {{"preset", "superfast"}, {"tune", "zerolatency"}, {"forced-idr", "1"}, {"qp", "21"}}};
    codec.options.insert(codec.options.end(), changed.begin(), changed.end());
    return codec;
}

Nv12Frame greyFrame(PixelSize picture, int luma) {
    Nv12Frame frame(picture);
    for (int y = 0; y < picture.height; ++y)
        std::fill_n(frame.luma() + y * frame.stride(), picture.width, std::uint8_t(luma));
    for (int y = 0; y < (picture.height + 1) / 2; ++y)
        std::fill_n(frame.chroma() + y * frame.stride(), (picture.width + 1) / 2 * 2, std::uint8_t(128));
    return frame;
}

std::string whyNot(const LibavEncoder::Codec &codec, PixelSize picture = {320, 240}) {
    const auto encoder = LibavEncoder::create(codec, picture);
    if (!encoder)
        return encoder.error().message;
    const auto tried = tryEncoder(**encoder, picture);
    return tried ? "" : tried.error().message;
}

TEST(LibavEncoder, makesAMovieAfterItsTrial) {
    // Odd sizes too: the movie has one row and column more.
    const PixelSize picture{321, 241};
    const PixelSize encodedSize{322, 242};
    const auto encoder = LibavEncoder::create(libavEncoder(), picture);
    ASSERT_TRUE(encoder) << encoder.error().message;
    const auto tried = tryEncoder(**encoder, picture);
    ASSERT_TRUE(tried) << tried.error().message;
    EXPECT_EQ((*encoder)->encodedSize(), encodedSize);

    const TemporaryFolder folder;
    const auto path = folder.path() / "film.mov";
    auto writer = MovieWriter::create(path, {});
    ASSERT_TRUE(writer);
    const TrackId track =
        (*writer)->addVideoTrack({.size = encodedSize,
                                  .timeScale = VideoEncoder::timeScale,
                                  .decoderConfiguration = (*encoder)->codecConfiguration()});
    BlockMap changed(picture);
    changed.markAll();
    const std::vector<int> lumas{60, 90, 150, 200};
    for (int i = 0; i < int(lumas.size()); ++i) {
        const auto frame = (*encoder)->encode(greyFrame(picture, lumas[std::size_t(i)]), changed,
                                              std::int64_t(i) * 9000, i % 2 == 0);
        ASSERT_TRUE(frame) << frame.error().message;
        EXPECT_EQ(frame->presentationTime, i * 9000);
        EXPECT_EQ(frame->isKeyFrame, i % 2 == 0);
        ASSERT_TRUE((*writer)->append(track, {.data = frame->data,
                                              .pts = frame->presentationTime,
                                              .dts = frame->presentationTime,
                                              .isKey = frame->isKeyFrame}));
    }
    ASSERT_TRUE((*writer)->finish(std::vector<TrackEnd>{{track, std::int64_t(lumas.size()) * 9000}}));

    const auto movie = decodeMovie(path);
    EXPECT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.size(), 1U);
    ASSERT_EQ(movie.streams[0].pictures.size(), lumas.size());
    for (std::size_t i = 0; i < lumas.size(); ++i) {
        EXPECT_NEAR(movie.streams[0].pictures[i].luma, lumas[i], 2);
        EXPECT_NEAR(movie.streams[0].pictures[i].seconds, double(i) * 0.1, 0.001);
    }
}

TEST(EncoderTrial, findsOutWhatIsUnfit) {
    EXPECT_EQ(whyNot(libavEncoder()), "");
    EXPECT_THAT(whyNot({.name = "no_such_encoder"}), HasSubstr("no_such_encoder"));
    // Without the low latency settings it wants to see the next frames first.
    EXPECT_EQ(whyNot({.name = "libx264", .options = {{"qp", "21"}}}), "The video encoder keeps frames back");
    EXPECT_EQ(whyNot(libavEncoder({{"qp", "45"}})), "The video encoder spoils the picture");
    // A card without its driver, or no card at all.
    EXPECT_NE(whyNot({.name = "h264_vaapi", .memory = AV_HWDEVICE_TYPE_VAAPI, .device = "/dev/null"}), "");
}

TEST(EncoderTrial, passesTheSoftwareEncoder) {
    for (const PixelSize picture : {PixelSize{320, 240}, PixelSize{2560, 1440}}) {
        const auto encoder = X264Encoder::create(picture);
        ASSERT_TRUE(encoder);
        const auto tried = tryEncoder(**encoder, picture);
        EXPECT_TRUE(tried) << tried.error().message;
    }
}

TEST(X264Encoder, goesOverToSlicesAndBackWithinOneMovie) {
    if (std::thread::hardware_concurrency() < 2)
        GTEST_SKIP() << "one core";
    const PixelSize picture{1280, 720};
    const auto encoder = *X264Encoder::create(picture);
    // Made before, so that there is no rest between two pictures.
    std::vector<Nv12Frame> frames;
    for (int luma = 40; luma < 200; luma += 20)
        frames.push_back(greyFrame(picture, luma));
    const TemporaryFolder folder;
    auto writer = *MovieWriter::create(folder / "film.mov", {});
    const TrackId track = writer->addVideoTrack({.size = picture,
                                                 .timeScale = VideoEncoder::timeScale,
                                                 .decoderConfiguration = encoder->codecConfiguration()});
    BlockMap changed(picture);
    changed.markAll();
    std::vector<int> lumas;
    std::vector<bool> keys;
    const auto encode = [&](bool keyFrame) {
        const std::size_t which = lumas.size() % frames.size();
        lumas.push_back(40 + int(which) * 20);
        const auto time = std::int64_t(lumas.size()) * 900;
        const auto frame = encoder->encode(frames[which], changed, time, keyFrame);
        ASSERT_TRUE(frame) << frame.error().message;
        keys.push_back(frame->isKeyFrame);
        ASSERT_TRUE(writer->append(
            track, {.data = frame->data, .pts = time, .dts = time, .isKey = frame->isKeyFrame}));
    };
    encode(true);
    // Without a rest: one thread is not enough. The other encoder begins with a key frame.
    const double limit = hostNow() + 20;
    do
        encode(false);
    while (!keys.back() && hostNow() < limit);
    EXPECT_TRUE(keys.back());
    for (int i = 0; i < 5; ++i)
        encode(false);
    EXPECT_FALSE(keys.back());
    const double rested = hostNow() + 0.5;
    ASSERT_TRUE(testing::eventually([rested] { return hostNow() >= rested; }));
    encode(true);
    encode(false);
    ASSERT_TRUE(writer->finish(std::vector<TrackEnd>{{track, std::int64_t(lumas.size() + 1) * 900}}));

    const auto movie = decodeMovie(folder / "film.mov");
    EXPECT_EQ(movie.error, "");
    ASSERT_EQ(movie.streams.at(0).pictures.size(), lumas.size());
    for (std::size_t i = 0; i < lumas.size(); ++i)
        ASSERT_NEAR(movie.streams[0].pictures[i].luma, lumas[i], 2) << i;
}

bool isSoftware(const std::unique_ptr<VideoEncoder> &encoder) {
    return dynamic_cast<LibavEncoder *>(encoder.get()) == nullptr;
}

TEST(EncoderChoice, takesTheCardWhereItPaysAndWorks) {
    const PixelSize common{640, 360};
    const PixelSize large{2560, 1440};
    EncoderChoice automatic(EncoderPreference::automatic, {libavEncoder()});
    EXPECT_TRUE(isSoftware(*automatic.create(common)));
    EXPECT_FALSE(isSoftware(*automatic.create(large)));
    automatic.encoderFailed();
    EXPECT_TRUE(isSoftware(*automatic.create(large)));

    EncoderChoice hardware(EncoderPreference::hardware, {{.name = "no_such_encoder"}, libavEncoder()});
    EXPECT_FALSE(isSoftware(*hardware.create(common)));
    EncoderChoice software(EncoderPreference::software, {libavEncoder()});
    EXPECT_TRUE(isSoftware(*software.create(large)));
    EncoderChoice broken(EncoderPreference::hardware, {libavEncoder({{"qp", "45"}})});
    EXPECT_TRUE(isSoftware(*broken.create(common)));
    EncoderChoice noCard(EncoderPreference::hardware, {});
    EXPECT_TRUE(isSoftware(*noCard.create(common)));
}

TEST(H264Units, splitsAStreamWithStartCodesOfBothLengths) {
    const std::vector<std::uint8_t> stream{0, 0, 0, 1, 0x67, 1, 2, 3, 0, 0, 1, 0x68, 4, 0, 0, 0, 1, 0x65, 5};
    const auto units = splitByteStream(stream);
    ASSERT_EQ(units.size(), 3U);
    EXPECT_EQ(typeOf(units[0]), H264UnitType::sequenceParameters);
    EXPECT_EQ(units[0].size(), 4U);
    EXPECT_EQ(units[1].size(), 2U);
    EXPECT_EQ(typeOf(units[2]), H264UnitType::keySlice);
    EXPECT_TRUE(splitByteStream({}).empty());
    EXPECT_TRUE(splitByteStream(std::span(stream).first(3)).empty());
}

} // namespace
} // namespace vantrell
