// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/SoundRecorder.h"

#include "Platform/AudioError.h"
#include "Support/Log.h"

#include <utility>

namespace vantrell {

SoundRecorder::SoundRecorder(AudioBackend &backend, Configuration configuration, const Clock &clock,
                             AudioTrackRecorder::SampleTap microphoneTap) {
    using Kind = AudioSourceRequest::Kind;
    if (configuration.capturesMicrophone)
        m_tracks.push_back(std::make_unique<AudioTrackRecorder>(
            backend.makeSource({Kind::microphone, std::move(configuration.microphoneId)}), "Microphone",
            clock, std::move(microphoneTap)));
    if (configuration.capturesSystemAudio)
        m_tracks.push_back(std::make_unique<AudioTrackRecorder>(
            backend.makeSource({Kind::systemAudio, std::nullopt}), "System Audio", clock, nullptr));
}

Task<std::expected<void, PlatformError>> SoundRecorder::open(std::stop_token stop) {
    std::vector<OneShot<AudioSourceState>> answers;
    for (const auto &track : m_tracks) {
        answers.push_back(track->firstState());
        track->open();
    }
    bool isServerMissing = !answers.empty();
    for (const auto &answer : answers) {
        const auto state = co_await answer.wait(stop);
        if (!state)
            co_return std::expected<void, PlatformError>();
        isServerMissing = isServerMissing && *state == AudioSourceState::serverMissing;
    }
    if (!isServerMissing)
        co_return std::expected<void, PlatformError>();
    m_tracks.clear();
    qCWarning(logCapture, "no sound server: recording without sound");
    co_return std::unexpected(audioError(AudioErrorCode::noSoundServer));
}

std::expected<void, PlatformError> SoundRecorder::begin(MovieWriter &writer, double epoch) {
    for (const auto &track : m_tracks)
        if (const auto begun = track->begin(writer, epoch); !begun)
            return begun;
    return {};
}

std::vector<TrackEnd> SoundRecorder::stop(double hostTime) {
    for (const auto &track : m_tracks)
        track->requestStop(hostTime);
    std::vector<TrackEnd> ends;
    for (const auto &track : m_tracks)
        if (const auto end = track->finish())
            ends.push_back(*end);
    m_tracks.clear();
    return ends;
}

} // namespace vantrell
