// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/InputEventRecorder.h"

#include "Platform/DisplayLayout.h"
#include "Support/Log.h"

#include <utility>

namespace vantrell {

namespace {

using Kind = InputEvent::Kind;

constexpr double scrollSpacing = 0.15;
constexpr double sampleInterval = 1.0 / 60;

} // namespace

InputEventRecorder::InputEventRecorder(InputMonitor &monitor, Clock &clock, Display display)
    : m_monitor(monitor), m_clock(clock), m_display(std::move(display)) {}

InputEventRecorder::~InputEventRecorder() {
    m_monitor.stop();
}

void InputEventRecorder::start() {
    m_events.clear();
    m_paused = false;
    m_reported.reset();
    m_lastMoveLocation.reset();
    m_lastScrollTime = 0;
    m_lastSampleTime = 0;
    const auto started = m_monitor.start([this](const PointerEvent &event) { handle(event); });
    if (!started)
        qCCritical(logCapture, "input events not recorded: %s", started.error().message.c_str());
    else
        samplePointer(m_clock.hostNow());
}

void InputEventRecorder::resume() {
    m_paused = false;
    m_lastMoveLocation.reset();
    samplePointer(m_clock.hostNow());
}

std::vector<RawEvent> InputEventRecorder::stop() {
    m_monitor.stop();
    // Others may still tell of the pointer.
    m_paused = true;
    m_scope.cancel();
    m_sampleDue = false;
    return std::exchange(m_events, {});
}

void InputEventRecorder::handle(const PointerEvent &event) {
    if (m_paused)
        return;
    switch (event.kind) {
    case PointerEvent::Kind::moved:
        pointerMoved(event.hostTime);
        break;
    case PointerEvent::Kind::scroll:
        handleScroll(event);
        break;
    case PointerEvent::Kind::leftDown:
    case PointerEvent::Kind::rightDown:
        if (const auto location = bottomLeftPointer())
            append(event.hostTime, Kind::down, *location);
        break;
    case PointerEvent::Kind::leftUp:
    case PointerEvent::Kind::rightUp:
        if (const auto location = bottomLeftPointer())
            append(event.hostTime, Kind::up, *location);
        break;
    }
}

void InputEventRecorder::pointerReported(double hostTime, const Point &desktopPixel) {
    m_reported = desktopPixel;
    if (!m_paused)
        pointerMoved(hostTime);
}

void InputEventRecorder::handleScroll(const PointerEvent &event) {
    if (event.isMomentum || (event.deltaX == 0 && event.deltaY == 0))
        return;
    if (event.hostTime - m_lastScrollTime < scrollSpacing)
        return;
    m_lastScrollTime = event.hostTime;
    if (const auto location = bottomLeftPointer())
        append(event.hostTime, Kind::scroll, *location);
}

void InputEventRecorder::pointerMoved(double hostTime) {
    const double now = m_clock.hostNow();
    const double wait = m_lastSampleTime + sampleInterval - now;
    if (wait <= 0) {
        samplePointer(hostTime);
        return;
    }
    if (std::exchange(m_sampleDue, true))
        return;
    m_scope.start(
        [](InputEventRecorder *self, std::chrono::milliseconds delay, std::stop_token stop) -> Task<> {
            if (!co_await self->m_clock.sleep(delay, stop))
                co_return;
            self->m_sampleDue = false;
            if (!self->m_paused)
                self->samplePointer(self->m_clock.hostNow());
        },
        this, std::chrono::milliseconds(int(wait * 1000) + 1));
}

void InputEventRecorder::samplePointer(double hostTime) {
    m_lastSampleTime = m_clock.hostNow();
    const auto location = bottomLeftPointer();
    if (!location || location == m_lastMoveLocation)
        return;
    m_lastMoveLocation = location;
    append(hostTime, Kind::move, *location);
}

void InputEventRecorder::append(double hostTime, InputEvent::Kind kind, const Point &location) {
    RawEvent event{hostTime, kind, location, {}};
    if (liveCaptureRect)
        event.captureRect = liveCaptureRect();
    if (onEvent)
        onEvent(event);
    m_events.push_back(event);
}

std::optional<Point> InputEventRecorder::bottomLeftPointer() {
    const auto location = m_reported ? m_reported : m_monitor.pointerLocation();
    return location ? std::optional(flipped(inPointsOf(m_display, *location))) : std::nullopt;
}

} // namespace vantrell
