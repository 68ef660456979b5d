// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/MicrophoneControl.h"

namespace vantrell {

MicrophoneControl::MicrophoneControl(AudioBackend &audio, Clock &clock, QWidget *parent)
    : DeviceControl({tr("Microphone"), tr("No microphone"), Symbol::microphone, Symbol::microphoneOff},
                    parent),
      m_audio(audio), m_listener(audio, clock) {
    m_listener.onLevel = [this](double level) {
        if (!isGone())
            button()->setLevel(level);
    };
    m_listener.onState = [this](AudioSourceState state) {
        m_sourceState = state;
        list();
        refresh(showsName());
    };
}

void MicrophoneControl::change(ToolBarState &state, bool isOn, std::optional<std::string> deviceId) {
    m_sourceState = AudioSourceState::running;
    state.micEnabled = isOn;
    state.micDeviceId = deviceId;
    if (state.onMicChange)
        state.onMicChange(isOn, deviceId);
}

Task<std::vector<DeviceControl::Device>> MicrophoneControl::connected(std::stop_token stop) {
    const auto found = co_await m_audio.microphones(stop);
    std::vector<Device> devices;
    for (const Microphone &microphone : found.value_or(std::vector<Microphone>()))
        devices.push_back({microphone.id, microphone.name, microphone.isDefault});
    co_return devices;
}

void MicrophoneControl::follow(const ToolBarState *state) {
    if (state && state->micEnabled) {
        m_listener.listenTo(state->micDeviceId);
        button()->setLevel(isGone() ? std::nullopt : std::optional(button()->level().value_or(0)));
        return;
    }
    m_listener.stop();
    m_sourceState = AudioSourceState::running;
    button()->setLevel(std::nullopt);
}

} // namespace vantrell
