// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/DeviceControl.h"
#include "Overlay/MicrophoneListener.h"

namespace vantrell {

/// The capture bar's microphone, with its level. Listens while it is active. Main thread.
class MicrophoneControl final : public DeviceControl {
    Q_DECLARE_TR_FUNCTIONS(CaptureBar)

public:
    /// Both outlive it.
    MicrophoneControl(AudioBackend &audio, Clock &clock, QWidget *parent);
    ~MicrophoneControl() override { shutDown(); }

protected:
    bool isOn(const ToolBarState &state) const override { return state.micEnabled; }
    std::optional<std::string> chosen(const ToolBarState &state) const override { return state.micDeviceId; }
    void change(ToolBarState &state, bool isOn, std::optional<std::string> deviceId) override;
    Task<std::vector<Device>> connected(std::stop_token stop) override;
    void follow(const ToolBarState *state) override;
    bool isBroken() const override { return m_sourceState != AudioSourceState::running; }

private:
    AudioBackend &m_audio;
    AudioSourceState m_sourceState = AudioSourceState::running;
    MicrophoneListener m_listener;
};

} // namespace vantrell
