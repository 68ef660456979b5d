// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/SoundRecorder.h"

#include "Platform/AudioError.h"
#include "Support/Log.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {

/// A server that is there answers in a few hundredths of a second. One that takes longer may still come: its
/// tracks begin with silence.
constexpr std::chrono::milliseconds serverPatience{500};

} // namespace

SoundStageFactory SoundRecorder::factory(AudioBackend &backend) {
    return [&backend](const CaptureStreamConfiguration &configuration,
                      AudioTrackRecorder::SampleTap microphone) -> std::unique_ptr<SoundStage> {
        if (!configuration.capturesMicrophone && !configuration.capturesSystemAudio)
            return nullptr;
        return std::make_unique<SoundRecorder>(backend, configuration, std::move(microphone));
    };
}

SoundRecorder::SoundRecorder(AudioBackend &backend, const CaptureStreamConfiguration &configuration,
                             AudioTrackRecorder::SampleTap microphone) {
    using Kind = AudioSourceRequest::Kind;
    if (configuration.capturesMicrophone)
        m_tracks.push_back(std::make_unique<AudioTrackRecorder>(
            backend.makeSource({Kind::microphone, configuration.microphoneId}), "Microphone",
            std::move(microphone)));
    if (configuration.capturesSystemAudio)
        m_tracks.push_back(std::make_unique<AudioTrackRecorder>(
            backend.makeSource({Kind::systemAudio, std::nullopt}), "System Audio", nullptr));
    for (const auto &track : m_tracks)
        track->open();
}

void SoundRecorder::begin(MovieSink &movie) {
    waitForServer();
    for (const auto &track : m_tracks) {
        if (const auto added = track->addTo(movie); !added) {
            qCCritical(logCapture, "no sound: %s", added.error().message.c_str());
            m_problem = added.error();
        }
    }
}

void SoundRecorder::waitForServer() {
    const auto deadline = std::chrono::steady_clock::now() + serverPatience;
    const bool isServerMissing =
        std::ranges::all_of(m_tracks, [deadline](const std::unique_ptr<AudioTrackRecorder> &track) {
            return track->waitForState(deadline) == AudioSourceState::serverMissing;
        });
    if (!isServerMissing || m_tracks.empty())
        return;
    m_tracks.clear();
    m_problem = audioError(AudioErrorCode::noSoundServer);
    qCWarning(logCapture, "recording without sound: no sound server");
}

void SoundRecorder::setEpoch(double hostTime) {
    for (const auto &track : m_tracks)
        track->begin(hostTime);
}

std::vector<TrackEnd> SoundRecorder::end(double hostTime) {
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
