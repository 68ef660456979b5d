// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/RecordingHUDState.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto tickInterval = 250ms;
/// So much before the cap the stop is asked for, so that the saved file is never longer than the plan allows.
constexpr double stopMargin = 0.75;
constexpr double nearCapSeconds = 60;

} // namespace

RecordingHUDState::RecordingHUDState(Clock &clock, double capSeconds, bool micEnabled)
    : m_clock(clock), m_capSeconds(capSeconds), m_micEnabled(micEnabled) {}

void RecordingHUDState::startTimer() {
    m_scope.cancel();
    m_startedAt = m_clock.hostNow();
    m_scope.start(this, &RecordingHUDState::tick);
}

void RecordingHUDState::pause() {
    if (m_startedAt)
        m_accumulatedSeconds += m_clock.hostNow() - *m_startedAt;
    m_startedAt.reset();
    m_scope.cancel();
    refresh();
}

void RecordingHUDState::stop() {
    m_scope.cancel();
}

Task<> RecordingHUDState::tick(std::stop_token stop) {
    while (co_await m_clock.sleep(tickInterval, stop)) {
        refresh();
        if (stop.stop_requested())
            co_return;
        if (m_capSeconds - stopMargin <= elapsedSeconds) {
            // May destroy this object.
            const auto ask = onStop;
            if (ask)
                ask();
            co_return;
        }
    }
}

void RecordingHUDState::refresh() {
    elapsedSeconds = m_accumulatedSeconds + (m_startedAt ? m_clock.hostNow() - *m_startedAt : 0);
}

bool RecordingHUDState::isNearCap() const {
    return m_capSeconds - elapsedSeconds <= nearCapSeconds;
}

std::string RecordingHUDState::stopHelp() const {
    if (isNearCap()) {
        return QCoreApplication::translate("RecordingHUD", "Auto-stops at %1, your plan's recording limit")
            .arg(QString::fromStdString(timeLabel(m_capSeconds)))
            .toStdString();
    }
    if (!m_hasStopKey)
        return QCoreApplication::translate("RecordingHUD", "Stop recording").toStdString();
    //: %1 is the key that stands for the command key, "Super".
    return QCoreApplication::translate("RecordingHUD", "Stop recording (%1-Shift-9)")
        .arg(QCoreApplication::translate("RecordingHUD", "Super"))
        .toStdString();
}

std::string timeLabel(double seconds) {
    // Also what is not finite has a label.
    const auto whole = seconds > 0 ? std::int64_t(std::min(seconds, 1e9)) : 0;
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

} // namespace vantrell
