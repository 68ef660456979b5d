// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/MicrophoneListener.h"
#include "Overlay/ToolBarState.h"
#include "Panels/PanelButton.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>

#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The capture bar's microphone: off, or a device with its level; the menu offers those that are connected.
/// Listens while it is active. Main thread.
class MicrophoneControl {
    Q_DECLARE_TR_FUNCTIONS(CaptureBar)

public:
    /// Both outlive it.
    MicrophoneControl(AudioBackend &audio, Clock &clock, QWidget *parent);

    PanelButton *button() const { return m_button; }
    /// Shows that state's choice and changes it, from now until `deactivate`.
    void activate(std::shared_ptr<ToolBarState> state);
    void deactivate();
    /// The state has changed, or the room for words.
    void refresh(bool showsName);

private:
    QMenu *makeMenu();
    void choose(bool isOn, const std::optional<std::string> &deviceId);
    void listen();
    Task<> list(std::stop_token stop);
    QString deviceName() const;
    bool isGone() const;

    AudioBackend &m_audio;
    PanelButton *m_button;
    std::shared_ptr<ToolBarState> m_state;
    std::vector<Microphone> m_microphones;
    /// The name that each device had when it was last seen.
    std::map<std::string, std::string> m_names;
    bool m_isListed = false;
    bool m_showsName = true;
    AudioSourceState m_sourceState = AudioSourceState::running;
    MicrophoneListener m_listener;
    TaskScope m_scope;
};

} // namespace vantrell
