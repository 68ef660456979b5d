// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AudioTrackRecorder.h"

#include "Media/Movie/MovieWriter.h"
#include "Support/HostTime.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace vantrell::testing {

namespace {

constexpr int blockFrames = 2048;
constexpr double blockSeconds = double(blockFrames) / audioSampleRate;

/// A source that the test plays: a tone, with pauses.
class PlayedSource final : public AudioSource {
public:
    void start(AudioSourceHandlers given) override { m_handlers = std::move(given); }

    void report(AudioSourceState state) { m_handlers.stateChanged(state); }
    /// From one host time to another; `amplitude` says how loud at each host time.
    void play(double from, double to, int channels, const std::function<double(double)> &amplitude) {
        for (double time = from; time < to; time += blockSeconds) {
            std::vector<float> samples;
            for (int i = 0; i < blockFrames; ++i) {
                const double at = time + double(i) / audioSampleRate;
                const auto value = float(amplitude(at) * std::sin(2 * std::numbers::pi * 1000 * at));
                samples.insert(samples.end(), std::size_t(channels), value);
            }
            m_handlers.block({samples, channels, time, time == from});
        }
    }

private:
    AudioSourceHandlers m_handlers;
};

class AudioTrackRecorderTest : public ::testing::Test {
protected:
    AudioTrackRecorderTest() { startOver(); }

    void startOver() {
        m_recorder.reset();
        m_file = m_folder / (std::to_string(++m_movies) + ".mov");
        m_writer = MovieWriter::create(m_file);
        auto source = std::make_unique<PlayedSource>();
        m_source = source.get();
        m_peak = 0;
        m_recorder.emplace(std::move(source), "Microphone", [this](std::span<const float> samples) {
            for (const float sample : samples)
                m_peak = std::max(m_peak, double(std::fabs(sample)));
        });
        m_recorder->open();
        m_source->report(AudioSourceState::running);
    }

    void begin(double epoch) {
        ASSERT_TRUE(m_recorder->addTo(**m_writer));
        m_recorder->begin(epoch);
    }

    DecodedMovie stopAndDecode(double hostTime) {
        m_recorder->requestStop(hostTime);
        const auto end = m_recorder->finish();
        EXPECT_TRUE(end);
        EXPECT_TRUE((*m_writer)->finish(std::vector{*end}));
        auto movie = decodeMovie(m_file);
        EXPECT_EQ(movie.error, "");
        EXPECT_EQ(movie.streams.size(), 1U);
        return movie;
    }

    static double onset(const DecodedMovie::Stream &track, double after) {
        for (std::size_t i = 0; i < track.samples.size(); ++i)
            if (track.sampleTimes[i] > after && std::fabs(track.samples[i]) > 0.2)
                return track.sampleTimes[i];
        return -1;
    }

    TemporaryFolder m_folder;
    std::expected<std::unique_ptr<MovieWriter>, PlatformError> m_writer;
    std::filesystem::path m_file;
    int m_movies = 0;
    PlayedSource *m_source = nullptr;
    std::optional<AudioTrackRecorder> m_recorder;
    double m_peak = 0;
};

TEST_F(AudioTrackRecorderTest, soundIsInTheMovieWhenItSoundedAndEndsWithTheStop) {
    for (const int channels : {1, 2}) {
        SCOPED_TRACE(channels);
        startOver();
        // Sound that comes a second late is taken for silence: what is played is still to come.
        const double epoch = hostNow() - 0.5;
        const auto beeps = [epoch](double time) {
            const double since = time - epoch;
            return (since > 0 && since < 0.1) || (since > 1.2345 && since < 1.3345) ? 0.5 : 0.0;
        };
        m_source->play(epoch - 0.5, epoch + 1, channels, beeps); // before the epoch is known
        begin(epoch);
        m_source->play(epoch + 1 + 0.5 * blockSeconds, epoch + 2.6, channels, beeps);
        const auto movie = stopAndDecode(epoch + 2.503);
        const auto &track = movie.streams.at(0);
        EXPECT_EQ(track.name, "Microphone");
        EXPECT_NEAR(onset(track, -1), 0, 0.002) << "the encoder's run-up is not part of the movie";
        EXPECT_NEAR(onset(track, 1), 1.2345, 0.002);
        EXPECT_NEAR(track.peak(1.25, 1.32), 0.5, 0.06);
        EXPECT_NEAR(movie.durationSeconds, 2.503, 0.0005);
        EXPECT_NEAR(m_peak, 0.5, 0.005);
    }
}

TEST_F(AudioTrackRecorderTest, withoutADeviceTheTrackIsSilentAndAsLongAsTheRecording) {
    m_source->report(AudioSourceState::deviceMissing);
    const double epoch = hostNow() - 7;
    begin(epoch);
    const double stop = hostNow();
    const auto movie = stopAndDecode(stop);
    EXPECT_LT(hostNow() - stop, 2) << "nobody waits for sound that cannot come";
    EXPECT_NEAR(movie.durationSeconds, stop - epoch, 0.0005);
    EXPECT_LT(movie.streams.at(0).peak(0, 8), 0.0001);
}

TEST_F(AudioTrackRecorderTest, samplesThatAreNoNumbersDoNotEndTheTrack) {
    const double epoch = hostNow() - 0.5;
    begin(epoch);
    m_source->play(epoch, epoch + 1, 2, [](double) { return std::numeric_limits<double>::quiet_NaN(); });
    m_source->play(epoch + 1 + blockSeconds, epoch + 2, 2, [](double) { return 0.5; });
    const auto movie = stopAndDecode(epoch + 2);
    EXPECT_GT(movie.streams.at(0).peak(1.5, 1.9), 0.3);
    EXPECT_NEAR(m_peak, 0.5, 0.005);
}

TEST_F(AudioTrackRecorderTest, aMovieThatTakesNothingMoreEndsTheSoundQuietly) {
    const LogCapture log;
    const double epoch = hostNow() - 3;
    begin(epoch);
    ASSERT_TRUE((*m_writer)->finish({}));
    m_source->play(epoch, epoch + 60, 2, [](double) { return 0.5; });
    m_recorder->requestStop(epoch + 3);
    EXPECT_TRUE(m_recorder->finish());
    EXPECT_TRUE(log.contains("sound ends early"));
}

TEST(AudioBlockQueue, keepsTheNewestSecondsAndSaysThatSomeAreMissing) {
    AudioBlockQueue queue(5);
    const std::vector<float> samples(blockFrames, 0.25F);
    for (int i = 0; i < 5000; ++i)
        queue.push({samples, 1, i * blockSeconds, false});
    EXPECT_LE(queue.seconds(), 5);
    EXPECT_GT(queue.seconds(), 4.9);
    EXPECT_NEAR(double(queue.lostFrames()) / audioSampleRate, 5000 * blockSeconds - queue.seconds(), 0.001);
    const double expected = 5000 * blockSeconds - queue.seconds();
    const auto first = queue.pop();
    ASSERT_TRUE(first);
    EXPECT_NEAR(first->hostTime, expected, 0.001);
    EXPECT_TRUE(first->startsAnew);
    EXPECT_EQ(first->samples, std::vector<float>(std::size_t(blockFrames) * 2, 0.25F));
    EXPECT_FALSE(queue.pop()->startsAnew);
}

} // namespace
} // namespace vantrell::testing
