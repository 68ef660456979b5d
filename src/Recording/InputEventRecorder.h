// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Display.h"
#include "Platform/InputMonitor.h"
#include "Recording/RawEvent.h"
#include "Support/Clock.h"
#include "Support/TaskScope.h"

#include <functional>
#include <optional>
#include <vector>

namespace vantrell {

/// Collects clicks, scrolls and pointer moves while a recording runs. Main thread.
///
/// The first move tells where the pointer is at the start. Further ones are taken at most 60 times a second
/// and only while the pointer moves: a resting one costs nothing.
class InputEventRecorder {
public:
    /// Monitor and clock must outlive the recorder. Events are counted in the points of `display`, the one
    /// that holds the capture.
    InputEventRecorder(InputMonitor &monitor, Clock &clock, Display display);
    ~InputEventRecorder();

    /// Forgets earlier events and starts to observe. Without a working monitor there are simply no events;
    /// the log says why.
    void start();

    /// Stops to observe and returns what was collected.
    std::vector<RawEvent> stop();

    /// The capture area now, for recordings whose area moves (windows): points from the display's top-left
    /// corner.
    std::function<std::optional<Rect>()> liveCaptureRect;

    /// Told of each event as it is recorded, so that it can be kept on disk.
    std::function<void(const RawEvent &)> onEvent;

    /// Where the pointer is, in the desktop's pixels, from whoever knows it where the monitor does not.
    void pointerReported(double hostTime, const Point &desktopPixel);

    /// Nothing is recorded from now on.
    void pause() { m_paused = true; }
    /// Goes on; where the pointer is counts as a move, also when it has not moved meanwhile.
    void resume();

private:
    void handle(const PointerEvent &event);
    void handleScroll(const PointerEvent &event);
    void pointerMoved(double hostTime);
    void samplePointer(double hostTime);
    void append(double hostTime, InputEvent::Kind kind, const Point &location);
    std::optional<Point> bottomLeftPointer();

    InputMonitor &m_monitor;
    Clock &m_clock;
    Display m_display;
    bool m_paused = false;
    std::optional<Point> m_reported;
    std::optional<Point> m_lastMoveLocation;
    double m_lastScrollTime = 0;
    double m_lastSampleTime = 0;
    bool m_sampleDue = false;
    std::vector<RawEvent> m_events;
    TaskScope m_scope;
};

} // namespace vantrell
