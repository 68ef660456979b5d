// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Clock.h"
#include "Support/Published.h"
#include "Support/TaskScope.h"

#include <functional>
#include <optional>
#include <string>

namespace vantrell {

/// What the HUD shows of a recording: its time without the pauses, the level of the microphone. Asks for the
/// stop shortly before the plan's longest recording is reached. Main thread; the clock outlives it.
class RecordingHUDState {
public:
    /// `capSeconds`: the longest recording of the plan.
    RecordingHUDState(Clock &clock, double capSeconds, bool micEnabled);
    RecordingHUDState(const RecordingHUDState &) = delete;
    RecordingHUDState &operator=(const RecordingHUDState &) = delete;

    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

    /// Begins a running stretch: at the start and after a pause.
    void startTimer();
    /// Ends the running stretch; the time stands still.
    void pause();
    /// No more ticks; nothing is called any more.
    void stop();

    /// The cap may arrive when the recording already runs.
    void setCap(double capSeconds) { m_capSeconds = capSeconds; }
    double capSeconds() const { return m_capSeconds; }
    bool micEnabled() const { return m_micEnabled; }
    /// Where the desktop has no hot key for it, the stop control names none.
    void setHasStopKey(bool has) { m_hasStopKey = has; }
    /// What the stop control says when it is pointed at.
    std::string stopHelp() const;
    /// The plan's limit is at most a minute away.
    bool isNearCap() const;

private:
    Task<> tick(std::stop_token stop);
    void refresh();

    Observers m_observers;
    Clock &m_clock;
    double m_capSeconds;
    const bool m_micEnabled;
    bool m_hasStopKey = true;
    std::optional<double> m_startedAt;
    double m_accumulatedSeconds = 0;

public:
    Published<double> elapsedSeconds{m_observers};
    Published<bool> isPaused{m_observers};
    Published<double> micLevel{m_observers};
    Published<bool> onLightBackdrop{m_observers};

    std::function<void()> onStop;
    std::function<void()> onPauseToggle;
    std::function<void()> onRestart;
    std::function<void()> onDelete;

private:
    TaskScope m_scope;
};

/// Minutes and seconds as the stop control shows them: "1:05", "20:00".
std::string timeLabel(double seconds);

} // namespace vantrell
