// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/MicrophoneControl.h"

#include "Panels/PanelFont.h"

#include <QMenu>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostNameWidth = 120;

} // namespace

MicrophoneControl::MicrophoneControl(AudioBackend &audio, Clock &clock, QWidget *parent)
    : m_audio(audio), m_button(new PanelButton(tr("Microphone"), parent)), m_listener(audio, clock) {
    m_button->setMostTextWidth(mostNameWidth);
    m_button->setMenuMaker([this] { return makeMenu(); });
    m_listener.onLevel = [this](double level) {
        if (!isGone())
            m_button->setLevel(level);
    };
    m_listener.onState = [this](AudioSourceState state) {
        m_sourceState = state;
        // Another device may have come in its place.
        m_scope.cancel();
        m_scope.start(this, &MicrophoneControl::list);
        refresh(m_showsName);
    };
}

void MicrophoneControl::activate(std::shared_ptr<ToolBarState> state) {
    m_state = std::move(state);
    m_scope.cancel();
    m_scope.start(this, &MicrophoneControl::list);
    refresh(m_showsName);
}

void MicrophoneControl::deactivate() {
    m_scope.cancel();
    m_listener.stop();
    m_state.reset();
}

void MicrophoneControl::refresh(bool showsName) {
    m_showsName = showsName;
    if (!m_state)
        return;
    listen();
    const bool isOn = m_state->micEnabled;
    const bool isWarned = isOn && isGone();
    m_button->setSymbol(isOn && !isWarned ? Symbol::microphone : Symbol::microphoneOff);
    m_button->setWarning(isWarned);
    m_button->setKind(isOn ? PanelButton::Kind::filled : PanelButton::Kind::plain);
    const QString second = isWarned ? tr("Not connected") : m_button->accessibleName();
    m_button->setWords(isOn && showsName ? deviceName() : QString(), isOn && showsName ? second : QString());
    m_button->setHelp(!isOn      ? tr("Microphone: off")
                      : isWarned ? tr("%1: not connected").arg(deviceName())
                                 : tr("Microphone: %1").arg(deviceName()));
    m_button->setLevel(isOn && !isWarned ? std::optional(m_button->level().value_or(0)) : std::nullopt);
}

void MicrophoneControl::listen() {
    if (m_state->micEnabled) {
        m_listener.listenTo(m_state->micDeviceId);
    } else {
        m_listener.stop();
        m_sourceState = AudioSourceState::running;
    }
}

Task<> MicrophoneControl::list(std::stop_token stop) {
    const auto found = co_await m_audio.microphones(stop);
    if (stop.stop_requested())
        co_return;
    m_microphones = found.value_or(std::vector<Microphone>());
    m_isListed = true;
    for (const Microphone &microphone : m_microphones)
        m_names[microphone.id] = microphone.name;
    refresh(m_showsName);
}

bool MicrophoneControl::isGone() const {
    if (m_sourceState != AudioSourceState::running)
        return true;
    if (!m_isListed || !m_state)
        return false;
    const std::optional<std::string> &id = m_state->micDeviceId;
    return !requireMicrophone(m_microphones, id);
}

QString MicrophoneControl::deviceName() const {
    const std::optional<std::string> &id = m_state->micDeviceId;
    if (id) {
        const auto known = m_names.find(*id);
        return oneLine(
            QString::fromStdString(known == m_names.end() ? tr("Microphone").toStdString() : known->second));
    }
    const auto standard = std::ranges::find(m_microphones, true, &Microphone::isDefault);
    return standard == m_microphones.end() ? tr("Default") : oneLine(QString::fromStdString(standard->name));
}

QMenu *MicrophoneControl::makeMenu() {
    if (!m_state)
        return nullptr;
    auto *menu = new QMenu(m_button);
    const bool isOn = m_state->micEnabled;
    const std::optional<std::string> chosen = m_state->micDeviceId;
    const auto add = [&](const QString &name, bool isChosen, bool turnsOn, std::optional<std::string> id) {
        QAction *action = menu->addAction(QString(name).replace('&', "&&"));
        action->setCheckable(true);
        action->setChecked(isChosen);
        QObject::connect(action, &QAction::triggered, menu, [this, turnsOn, id] { choose(turnsOn, id); });
        return action;
    };
    add(tr("No microphone"), !isOn, false, chosen);
    menu->addSeparator();
    add(tr("System default"), isOn && !chosen, true, std::nullopt);
    for (const Microphone &microphone : m_microphones)
        add(oneLine(QString::fromStdString(microphone.name)), isOn && chosen == microphone.id, true,
            microphone.id);
    const bool isMissing =
        chosen && std::ranges::find(m_microphones, *chosen, &Microphone::id) == m_microphones.end();
    if (isMissing && m_isListed)
        add(tr("%1 (not connected)").arg(deviceName()), isOn, true, chosen)->setEnabled(false);
    // For the next time it opens.
    m_scope.cancel();
    m_scope.start(this, &MicrophoneControl::list);
    return menu;
}

void MicrophoneControl::choose(bool isOn, const std::optional<std::string> &deviceId) {
    const std::shared_ptr<ToolBarState> state = m_state;
    if (!state)
        return;
    m_sourceState = AudioSourceState::running;
    state->micEnabled = isOn;
    state->micDeviceId = deviceId;
    if (state->onMicChange)
        state->onMicChange(isOn, deviceId);
}

} // namespace vantrell
