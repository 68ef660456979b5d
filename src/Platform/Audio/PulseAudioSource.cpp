// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseAudioSource.h"

#include "Support/Log.h"

#include <utility>

namespace vantrell {

namespace {

/// A device that is going away ends its streams before it is off the list: asking at once finds it again.
constexpr std::chrono::milliseconds settleTime{250};
/// A server that accepts connections and says nothing counts as none; libpulse itself waits for 30 s.
constexpr std::chrono::seconds answerTime{4};

} // namespace

PulseAudioSource::PulseAudioSource(AudioSourceRequest request)
    : m_request(std::move(request)), m_loop("sound") {}

PulseAudioSource::~PulseAudioSource() {
    const PulseLoop::Lock lock(m_loop);
    m_stream.reset();
    m_query.reset();
    m_silentServer.reset();
    m_lookAgain.reset();
    m_connection.reset();
}

void PulseAudioSource::start(AudioSourceHandlers handlers) {
    m_handlers = std::move(handlers);
    const PulseLoop::Lock lock(m_loop);
    m_lookAgain.emplace(m_loop, [this] { lookForDevice(); });
    m_silentServer.emplace(m_loop, [this] { report(AudioSourceState::serverMissing); });
    m_silentServer->start(answerTime);
    m_connection.emplace(m_loop, PulseConnection::Handlers{.connected =
                                                               [this](pa_context *context) {
                                                                   m_context = context;
                                                                   lookForDevice();
                                                               },
                                                           .disconnected = [this] { disconnected(); },
                                                           .devicesChanged = [this] { lookForDevice(); }});
    m_connection->connect();
}

void PulseAudioSource::lookForDevice() {
    if (!m_context)
        return;
    if (m_query) {
        m_changedMeanwhile = true;
        return;
    }
    m_query.emplace(m_context, m_request, [this](std::optional<PulseDeviceQuery::Device> device) {
        m_query.reset();
        changeOver(std::move(device));
        if (std::exchange(m_changedMeanwhile, false))
            lookForDevice();
    });
}

void PulseAudioSource::changeOver(std::optional<PulseDeviceQuery::Device> device) {
    const bool isRecorded = device && m_device && m_stream && device->isSameAs(*m_device);
    if (isRecorded)
        return;
    m_stream.reset();
    m_device = std::move(device);
    if (!m_device)
        return report(AudioSourceState::deviceMissing);
    qCInfo(logCapture, "sound from %s", m_device->name.c_str());
    m_stream.emplace(
        m_context, m_device->name, m_device->channels,
        PulseRecordStream::Handlers{.block = m_handlers.block ? m_handlers.block : [](const AudioBlock &) {},
                                    .started = [this] { report(AudioSourceState::running); },
                                    .ended = [this] { streamEnded(); }});
    if (!m_stream->isOpen())
        streamEnded();
}

void PulseAudioSource::streamEnded() {
    m_stream.reset();
    report(AudioSourceState::deviceMissing);
    m_lookAgain->start(settleTime);
}

void PulseAudioSource::disconnected() {
    m_stream.reset();
    m_query.reset();
    m_changedMeanwhile = false;
    m_context = nullptr;
    report(AudioSourceState::serverMissing);
}

void PulseAudioSource::report(AudioSourceState state) {
    m_silentServer->cancel();
    if (std::exchange(m_reported, state) != state && m_handlers.stateChanged)
        m_handlers.stateChanged(state);
}

} // namespace vantrell
