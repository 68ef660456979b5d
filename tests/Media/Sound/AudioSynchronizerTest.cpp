// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AudioSynchronizer.h"
#include "Platform/AudioSource.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace vantrell::testing {

namespace {

constexpr double framesPerSecond = audioSampleRate;
constexpr double movieZero = 1000.25; // host time of the movie's first picture

/// A device whose clock runs `skew` too fast. It plays a click at each full second of the host's clock, that
/// is what it hears, and stamps its blocks with some jitter.
class SkewedDevice {
public:
    explicit SkewedDevice(double skew, double startTime)
        : m_rate(framesPerSecond * (1 + skew)), m_start(startTime) {}

    struct Block {
        std::vector<float> samples;
        double hostTime;
    };

    Block next(std::size_t frames, double jitter) {
        Block block{std::vector<float>(frames * 2),
                    now() + std::uniform_real_distribution<double>(-jitter, jitter)(m_random)};
        for (std::size_t i = 0; i < frames; ++i, ++m_frame) {
            const double since = now() - std::floor(now());
            // 2 ms of 1 kHz, loudest in the middle.
            const double click = since < 0.002 ? std::sin(since * 2 * M_PI * 1000) : 0;
            block.samples[2 * i] = block.samples[2 * i + 1] = float(click);
        }
        return block;
    }
    /// The device is off for so long.
    void pause(double seconds) { m_start += seconds; }
    double now() const { return m_start + double(m_frame) / m_rate; }

private:
    const double m_rate;
    double m_start;
    std::int64_t m_frame = 0;
    std::mt19937 m_random{42};
};

/// Notes when clicks begin in the track instead of keeping minutes of it.
class Track {
public:
    AudioSynchronizer::Sink sink() {
        return [this](std::span<const float> samples) -> std::expected<void, PlatformError> {
            for (std::size_t i = 0; i < samples.size(); i += 2, ++frames) {
                EXPECT_EQ(samples[i], samples[i + 1]);
                if (std::fabs(samples[i]) < 0.3)
                    continue;
                if (frames - m_lastLoud > framesPerSecond / 10)
                    clicks.push_back(double(frames) / framesPerSecond);
                m_lastLoud = frames;
            }
            return {};
        };
    }
    /// How far the clicks are from the host's full seconds, the worst of those after `from` seconds.
    double worstOffset(double from) const {
        double worst = 0;
        for (const double click : clicks)
            if (click > from) {
                const double host = movieZero + click - 0.00005; // a click is loud a little after it begins
                worst = std::max(worst, std::fabs(host - std::round(host)));
            }
        return worst;
    }
    std::int64_t frames = 0;
    std::vector<double> clicks;

private:
    std::int64_t m_lastLoud = -1'000'000;
};

class SkewedClock : public ::testing::TestWithParam<double> {};

TEST_P(SkewedClock, isFollowedForTenMinutes) {
    Track track;
    auto synchronizer = AudioSynchronizer::create(track.sink());
    synchronizer->setEpoch(movieZero);
    ASSERT_TRUE(synchronizer);
    SkewedDevice device(GetParam(), movieZero - 0.3);
    while (device.now() < movieZero + 600) {
        const auto block = device.next(2048, 0.002);
        ASSERT_TRUE(synchronizer->push(block.samples, block.hostTime, false));
    }
    const auto end = synchronizer->finish(movieZero + 599.5);
    ASSERT_TRUE(end);
    EXPECT_EQ(*end, std::int64_t(599.5 * framesPerSecond));
    EXPECT_GE(track.frames, *end);
    EXPECT_EQ(track.clicks.size(), 600U);
    EXPECT_LT(track.worstOffset(0), 0.005) << "while the clock is being learnt";
    EXPECT_LT(track.worstOffset(60), 0.002) << "once it is known";
}

INSTANTIATE_TEST_SUITE_P(Ppm, SkewedClock, ::testing::Values(0.0, 200e-6, -200e-6, 500e-6));

TEST(AudioSynchronizer, cutsWhatIsBeforeTheEpochAndPadsALateStart) {
    for (const double start : {movieZero - 2.0, movieZero + 1.5}) {
        Track track;
        auto synchronizer = AudioSynchronizer::create(track.sink());
        synchronizer->setEpoch(movieZero);
        SkewedDevice device(0, start);
        while (device.now() < movieZero + 4)
            if (const auto block = device.next(1000, 0); true)
                ASSERT_TRUE(synchronizer->push(block.samples, block.hostTime, false));
        EXPECT_LT(track.worstOffset(0), 0.001) << "started at " << start;
        EXPECT_NEAR(synchronizer->coveredUntil(), movieZero + 4, 0.03);
        EXPECT_NEAR(double(track.frames) / framesPerSecond, 4, 0.03);
    }
}

TEST(AudioSynchronizer, fillsGapsWithAsMuchSilenceWhetherAnnouncedOrNot) {
    for (const bool announced : {true, false}) {
        for (const double gap : {0.05, 0.7, 30.0}) {
            Track track;
            auto synchronizer = AudioSynchronizer::create(track.sink());
            synchronizer->setEpoch(movieZero);
            SkewedDevice device(100e-6, movieZero - 0.1);
            for (int part = 0; part < 3; ++part) {
                for (int i = 0; i < 100; ++i) {
                    const auto block = device.next(2048, 0.001);
                    ASSERT_TRUE(
                        synchronizer->push(block.samples, block.hostTime, announced && i == 0 && part > 0));
                }
                device.pause(gap);
            }
            const double stop = device.now() - gap;
            EXPECT_EQ(synchronizer->finish(stop), std::llround((stop - movieZero) * framesPerSecond));
            // A short gap that nobody announced is believed after half a second.
            const bool isMendedLate = !announced && gap < 0.1;
            EXPECT_LT(track.worstOffset(0), isMendedLate ? 0.055 : 0.004)
                << "gap of " << gap << (announced ? ", announced" : "");
            EXPECT_LT(
                std::fabs(movieZero + track.clicks.back() - std::round(movieZero + track.clicks.back())),
                0.004);
        }
    }
}

TEST(AudioSynchronizer, aSilentDeviceLeavesATrackOfTheRightLengthAndLateSoundIsDropped) {
    Track track;
    auto synchronizer = AudioSynchronizer::create(track.sink());
    synchronizer->setEpoch(movieZero);
    ASSERT_TRUE(synchronizer->fillUntil(movieZero - 5));
    EXPECT_EQ(track.frames, 0);
    ASSERT_TRUE(synchronizer->fillUntil(movieZero + 2.5));
    EXPECT_EQ(track.frames, std::int64_t(2.5 * framesPerSecond));
    SkewedDevice device(0, movieZero + 1); // for a time that is filled already, then beyond
    for (int i = 0; i < 100; ++i)
        if (const auto block = device.next(2048, 0); true)
            ASSERT_TRUE(synchronizer->push(block.samples, block.hostTime, false));
    EXPECT_LT(track.worstOffset(0), 0.001);
    EXPECT_GT(track.clicks.at(0), 2.5);
    ASSERT_TRUE(synchronizer->fillUntil(movieZero + 4)) << "sound that is there is not filled over";
    EXPECT_EQ(synchronizer->finish(movieZero + 10), std::int64_t(10 * framesPerSecond));
    EXPECT_EQ(track.frames, std::int64_t(10 * framesPerSecond));
}

TEST(AudioSynchronizer, aStopBeforeTheEpochLeavesNothing) {
    Track track;
    auto synchronizer = AudioSynchronizer::create(track.sink());
    synchronizer->setEpoch(movieZero);
    SkewedDevice device(0, movieZero - 1);
    const auto block = device.next(2048, 0);
    ASSERT_TRUE(synchronizer->push(block.samples, block.hostTime, true));
    EXPECT_EQ(synchronizer->finish(movieZero - 0.5), 0);
    EXPECT_EQ(track.frames, 0);
}

TEST(AudioSynchronizer, aSingleWrongTimeStampIsNotHeard) {
    Track track;
    auto synchronizer = AudioSynchronizer::create(track.sink());
    synchronizer->setEpoch(movieZero);
    SkewedDevice device(0, movieZero);
    for (int i = 0; i < 500; ++i) {
        const auto block = device.next(2048, 0);
        const double wrong = i == 250 ? 0.04 : 0;
        ASSERT_TRUE(synchronizer->push(block.samples, block.hostTime + wrong, false));
    }
    EXPECT_LT(track.worstOffset(0), 0.002);
}

} // namespace
} // namespace vantrell::testing
