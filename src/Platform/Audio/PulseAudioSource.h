// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Audio/PulseConnection.h"
#include "Platform/Audio/PulseDeviceQuery.h"
#include "Platform/Audio/PulseLoop.h"
#include "Platform/Audio/PulseRecordStream.h"
#include "Platform/AudioSource.h"

#include <optional>

namespace vantrell {

/// An AudioSource of a PulseAudio server, PipeWire's included, with a thread of its own.
///
///   no server <-> (connected, disconnected) no device <-> (query, stream ended) running
///
/// Whenever devices or defaults change, it asks again which device is meant and changes over when it is
/// another than the one it records.
class PulseAudioSource final : public AudioSource {
public:
    explicit PulseAudioSource(AudioSourceRequest request);
    ~PulseAudioSource() override;

    void start(AudioSourceHandlers handlers) override;

private:
    void lookForDevice();
    void changeOver(std::optional<PulseDeviceQuery::Device> device);
    void streamEnded();
    void disconnected();
    void report(AudioSourceState state);

    const AudioSourceRequest m_request;
    AudioSourceHandlers m_handlers;
    PulseLoop m_loop;
    // From here on the loop's thread's, in the order in which they depend on each other.
    std::optional<PulseConnection> m_connection;
    std::optional<PulseTimer> m_lookAgain;
    std::optional<PulseTimer> m_silentServer;
    pa_context *m_context = nullptr;
    std::optional<PulseDeviceQuery> m_query;
    bool m_changedMeanwhile = false;
    std::optional<PulseDeviceQuery::Device> m_device;
    std::optional<PulseRecordStream> m_stream;
    std::optional<AudioSourceState> m_reported;
};

} // namespace vantrell
