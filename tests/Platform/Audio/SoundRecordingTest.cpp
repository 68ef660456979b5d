// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieWriter.h"
#include "Media/Sound/SoundRecorder.h"
#include "Platform/Audio/PulseAudioBackend.h"
#include "Platform/AudioError.h"
#include "Support/HostTime.h"
#include "TestSignal.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundPlayer.h"
#include "TestSupport/Sound/SoundSession.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace vantrell::testing {

namespace {

using Configuration = CaptureStreamConfiguration;

/// What is seen as out of sync; the cycles of the server alone make a few milliseconds.
constexpr double tolerance = 0.020;

/// A recording of sound alone, as a capture stream makes it.
class Recording {
public:
    Recording(AudioBackend &backend, const Configuration &configuration)
        : m_writer(MovieWriter::create(m_folder / "movie.mov")), m_sound(backend, configuration, nullptr) {
        m_sound.begin(**m_writer);
        m_epoch = hostNow();
        m_sound.setEpoch(m_epoch);
    }

    /// Seconds recorded so far.
    double elapsed() const { return hostNow() - m_epoch; }
    void recordUntil(double seconds) {
        eventually([&] { return elapsed() >= seconds; });
    }
    /// Records until `least` and until it is known of a piece from `from` on what each player played in it: a
    /// busy server stumbles. Returns the end of what can be judged.
    double recordHeard(double from, double least, const std::vector<const SoundPlayer *> &players) {
        const auto isKnown = [&](double at) {
            return std::ranges::all_of(players, [&](const SoundPlayer *player) {
                return player->startTime(m_epoch + at + 0.2).has_value();
            });
        };
        EXPECT_TRUE(eventually([&] {
            double at = from;
            while (at + 1 < elapsed() && !isKnown(at))
                at += 0.5;
            return elapsed() >= least && at + 1 < elapsed();
        })) << "the server never played steadily";
        return elapsed() - 0.5;
    }
    double epoch() const { return m_epoch; }

    /// The movie, which must be as long as the recording.
    DecodedMovie stop() {
        const double stop = hostNow();
        const std::vector<TrackEnd> ends = m_sound.end(stop);
        m_stopSeconds = hostNow() - stop;
        EXPECT_TRUE((*m_writer)->finish(ends));
        DecodedMovie movie = decodeMovie(m_folder / "movie.mov");
        EXPECT_EQ(movie.error, "");
        for (const auto &stream : movie.streams) {
            EXPECT_NEAR(stream.durationSeconds, stop - m_epoch, 0.001) << stream.name;
            EXPECT_NEAR(stream.startSeconds, 0, 0.001) << stream.name;
        }
        return movie;
    }
    double stopSeconds() const { return m_stopSeconds; }

private:
    TemporaryFolder m_folder;
    std::expected<std::unique_ptr<MovieWriter>, PlatformError> m_writer;
    SoundRecorder m_sound;
    double m_epoch = 0;
    double m_stopSeconds = 0;
};

class SoundRecording : public ::testing::Test {
protected:
    /// Plays a signal and waits until it is known when it is heard.
    std::unique_ptr<SoundPlayer> play(const std::string &output, const TestSignal &signal) {
        auto player = std::make_unique<SoundPlayer>(output, signal.samples());
        EXPECT_TRUE(eventually([&] { return player->startTime(hostNow() - 0.7).has_value(); }))
            << "cannot play";
        return player;
    }

    /// Looks at the track between two times wherever it is known what was heard.
    static void expectInSync(const DecodedMovie::Stream &track, double from, double to,
                             const TestSignal &signal, const SoundPlayer &player,
                             const Recording &recording) {
        SCOPED_TRACE(track.name);
        int compared = 0;
        int heard = 0;
        for (double at = from; at < to; at += 0.5) {
            // The middle of the piece that is compared.
            const auto start = player.startTime(recording.epoch() + at + 0.2);
            if (!start)
                continue;
            const auto match = signal.match(track, at, recording.epoch() - *start);
            const double peak = track.peak(at, at + 0.4);
            std::printf("%s at %.2f s: %+.1f ms, likeness %.2f, peak %.3f\n", track.name.c_str(), at,
                        match.offset * 1000, match.likeness, peak);
            // A busy machine makes the server drop it, and parts of it; another signal has less than 0.2.
            ++compared;
            if (peak < 0.001)
                continue;
            ++heard;
            EXPECT_GT(match.likeness, 0.4) << "at " << at << " s";
            EXPECT_LE(std::fabs(match.offset), tolerance) << "at " << at << " s";
        }
        EXPECT_GE(2 * heard, compared);
    }

    SoundSession m_session;
    PulseAudioBackend m_backend;
    const TestSignal m_voice{1};
    const TestSignal m_music{2};
};

TEST_F(SoundRecording, microphoneAndSystemAudioAreTracksOfTheirOwnInSync) {
    const auto voice = play("vmic_in", m_voice);
    const auto music = play(SoundSession::speaker, m_music);
    Recording recording(m_backend, {.capturesMicrophone = true, .capturesSystemAudio = true});
    const double heard = recording.recordHeard(0.05, 6, {voice.get(), music.get()});
    const auto movie = recording.stop();
    // What waits for the server waits longer.
    EXPECT_LT(recording.stopSeconds(), 5);

    ASSERT_EQ(movie.streams.size(), 2U);
    EXPECT_EQ(movie.streams[0].name, "Microphone");
    EXPECT_EQ(movie.streams[1].name, "System Audio");
    expectInSync(movie.streams[0], 0.05, heard, m_voice, *voice, recording);
    expectInSync(movie.streams[1], 0.05, heard, m_music, *music, recording);
}

TEST_F(SoundRecording, anUnpluggedMicrophoneIsSilentUntilItIsBack) {
    const auto voice = play("vmic_in", m_voice);
    Recording recording(m_backend, {.capturesMicrophone = true, .microphoneId = SoundSession::microphone});
    const double heard = recording.recordHeard(0.5, 2, {voice.get()});
    m_session.unplugMicrophone(SoundSession::microphone);
    const double unplugged = recording.elapsed();
    recording.recordUntil(unplugged + 2);
    m_session.plugMicrophone(SoundSession::microphone);
    const double plugged = recording.elapsed();
    const double heardAgain = recording.recordHeard(plugged + 1, plugged + 3, {voice.get()});
    const auto movie = recording.stop();

    ASSERT_EQ(movie.streams.size(), 1U);
    expectInSync(movie.streams[0], 0.5, heard, m_voice, *voice, recording);
    EXPECT_LT(movie.streams[0].peak(unplugged + 0.3, unplugged + 1.9), 0.001);
    expectInSync(movie.streams[0], plugged + 1, heardAgain, m_voice, *voice, recording);
}

TEST_F(SoundRecording, followsTheDefaultDevicesUnlessOneIsPinned) {
    m_session.plugMicrophone("headset");
    m_session.plugSpeaker("headphones");
    const TestSignal headsetVoice(3);
    const TestSignal headphonesMusic(4);
    const auto voice = play("vmic_in", m_voice);
    const auto otherVoice = play("headset_in", headsetVoice);
    const auto music = play(SoundSession::speaker, m_music);
    const auto otherMusic = play("headphones", headphonesMusic);

    Recording following(m_backend, {.capturesMicrophone = true, .capturesSystemAudio = true});
    Recording pinned(m_backend, {.capturesMicrophone = true, .microphoneId = SoundSession::microphone});
    const double before = pinned.recordHeard(0.5, 2, {voice.get(), music.get()});
    m_session.setDefaultMicrophone("headset");
    m_session.setDefaultSpeaker("headphones");
    m_session.waitUntilRecorded("headset");
    m_session.waitUntilRecorded("headphones.monitor");
    const double changed = pinned.elapsed() + 1;
    const double after =
        pinned.recordHeard(changed, changed + 2, {voice.get(), otherVoice.get(), otherMusic.get()});
    const auto followed = following.stop();
    const auto kept = pinned.stop();

    ASSERT_EQ(followed.streams.size(), 2U);
    ASSERT_EQ(kept.streams.size(), 1U);
    expectInSync(followed.streams[0], 0.5, before, m_voice, *voice, following);
    expectInSync(followed.streams[1], 0.5, before, m_music, *music, following);
    expectInSync(followed.streams[0], changed, after, headsetVoice, *otherVoice, following);
    expectInSync(followed.streams[1], changed, after, headphonesMusic, *otherMusic, following);
    expectInSync(kept.streams[0], 0.5, after, m_voice, *voice, pinned);
}

TEST_F(SoundRecording, aKilledSoundServerIsSilenceUntilItRunsAgain) {
    auto voice = play("vmic_in", m_voice);
    Recording recording(m_backend, {.capturesMicrophone = true, .capturesSystemAudio = true});
    recording.recordUntil(1.5);
    m_session.killServer();
    const double killed = recording.elapsed();
    voice.reset();
    recording.recordUntil(killed + 1);
    m_session.startServer();
    voice = play("vmic_in", m_voice);
    const double restarted = recording.elapsed();
    const double heard = recording.recordHeard(restarted + 1, restarted + 3, {voice.get()});
    const auto movie = recording.stop();

    ASSERT_EQ(movie.streams.size(), 2U);
    EXPECT_GT(movie.streams[0].peak(0.5, 1.4), 0.1);
    EXPECT_LT(movie.streams[0].peak(killed + 0.3, killed + 1), 0.001);
    expectInSync(movie.streams[0], restarted + 1, heard, m_voice, *voice, recording);
}

TEST_F(SoundRecording, withoutASoundServerItRecordsNoSoundAndSaysSo) {
    m_session.killServer();
    const double begun = hostNow();
    const TemporaryFolder folder;
    const auto writer = MovieWriter::create(folder / "movie.mov");
    SoundRecorder sound(m_backend, {.capturesMicrophone = true, .capturesSystemAudio = true}, nullptr);
    sound.begin(**writer);
    ASSERT_TRUE(sound.problem());
    EXPECT_TRUE(isAudioError(*sound.problem(), AudioErrorCode::noSoundServer));
    EXPECT_EQ(sound.problem()->description(), "No sound server is running on this desktop");
    sound.setEpoch(hostNow());
    EXPECT_TRUE(sound.end(hostNow()).empty());
    const auto microphones = runTask(m_backend.microphones({}));
    ASSERT_FALSE(microphones);
    EXPECT_TRUE(isAudioError(microphones.error(), AudioErrorCode::noSoundServer));
    EXPECT_LT(hostNow() - begun, 2);
}

TEST_F(SoundRecording, aHungSoundServerHoldsNothingUpAndIsHeardWhenItGoesOn) {
    m_session.suspendServer();
    const double begun = hostNow();
    Recording recording(m_backend, {.capturesMicrophone = true});
    EXPECT_LT(hostNow() - begun, 2);
    const auto microphones = runTask(m_backend.microphones({}));
    ASSERT_FALSE(microphones);
    EXPECT_TRUE(isAudioError(microphones.error(), AudioErrorCode::serverFailed));
    m_session.resumeServer();
    const auto voice = play("vmic_in", m_voice);
    const double resumed = recording.elapsed();
    const double heard = recording.recordHeard(resumed + 0.5, resumed + 2, {voice.get()});
    const auto movie = recording.stop();
    ASSERT_EQ(movie.streams.size(), 1U);
    EXPECT_LT(movie.streams[0].peak(0, 4), 0.001);
    expectInSync(movie.streams[0], resumed + 0.5, heard, m_voice, *voice, recording);
}

TEST_F(SoundRecording, listsMicrophonesTheDefaultOneFirst) {
    m_session.plugMicrophone("another");
    auto microphones = runTask(m_backend.microphones({}));
    ASSERT_TRUE(microphones);
    ASSERT_EQ(microphones->size(), 2U) << "monitors of outputs are no microphones";
    EXPECT_EQ(microphones->at(0), (Microphone{SoundSession::microphone, "Virtual-vmic", true}));
    EXPECT_EQ(microphones->at(1), (Microphone{"another", "Virtual-another", false}));
    m_session.setDefaultMicrophone("another");
    microphones = runTask(m_backend.microphones({}));
    EXPECT_EQ(microphones->at(0).id, "another");
}

} // namespace
} // namespace vantrell::testing
