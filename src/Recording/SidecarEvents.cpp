// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/SidecarEvents.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vantrell {

namespace {

constexpr double leadSeconds = 0.1;
constexpr double clickMargin = 12;

double oneDecimal(double value) {
    return std::round(value * 10) / 10;
}

bool isWithin(const Point &point, const Rect &area, double margin) {
    return point.x >= -margin && point.x <= area.width + margin && point.y >= -margin &&
           point.y <= area.height + margin;
}

/// Carries the one state of the walk, whether the pointer is inside the area, over all segments.
class Mapping {
public:
    Mapping(const Rect &screenFrame, const Rect &captureRect)
        : m_screen(flipped(screenFrame)), m_captureRect(captureRect) {}

    std::optional<InputEvent> map(const RawEvent &event, double anchor) {
        const double sinceAnchorMs = (event.hostTime - anchor) * 1000;
        if (sinceAnchorMs < -leadSeconds * 1000)
            return std::nullopt;
        const Rect area = event.captureRect.value_or(m_captureRect);
        const Point local{event.location.x - m_screen.x - area.x,
                          m_screen.maxY() - event.location.y - area.y};
        const Point scaled{local.x * (area.width > 0 ? m_captureRect.width / area.width : 1),
                           local.y * (area.height > 0 ? m_captureRect.height / area.height : 1)};
        const double t = oneDecimal(std::max(sinceAnchorMs, 0.0));
        const InputEvent mapped{t, event.kind, oneDecimal(scaled.x), oneDecimal(scaled.y)};
        if (event.kind == InputEvent::Kind::move)
            return mapMove(mapped, scaled, isWithin(local, area, 0));
        return isWithin(local, area, clickMargin) ? std::optional(mapped) : std::nullopt;
    }

private:
    std::optional<InputEvent> mapMove(const InputEvent &mapped, const Point &scaled, bool isInside) {
        const bool wasInside = std::exchange(m_inside, isInside);
        if (isInside)
            return mapped;
        if (!wasInside)
            return std::nullopt;
        return InputEvent{mapped.t, InputEvent::Kind::exit,
                          oneDecimal(std::clamp(scaled.x, 0.0, m_captureRect.width)),
                          oneDecimal(std::clamp(scaled.y, 0.0, m_captureRect.height))};
    }

    Rect m_screen;
    Rect m_captureRect;
    bool m_inside = false;
};

} // namespace

std::vector<InputEvent> sidecarEvents(const std::vector<RawEvent> &raw, const Rect &screenFrame,
                                      const Rect &captureTopLeftRect,
                                      const std::vector<RecordedSegment> &segments) {
    std::vector<InputEvent> events;
    Mapping mapping(screenFrame, captureTopLeftRect);
    double offsetMs = 0;
    for (const RecordedSegment &segment : segments) {
        const double first = segment.anchorHostTime - leadSeconds;
        const double last = segment.anchorHostTime + segment.durationMs / 1000;
        for (const RawEvent &event : raw) {
            if (event.hostTime < first || event.hostTime > last)
                continue;
            if (auto mapped = mapping.map(event, segment.anchorHostTime)) {
                mapped->t = oneDecimal(mapped->t + offsetMs);
                events.push_back(*mapped);
            }
        }
        offsetMs += segment.durationMs;
    }
    return events;
}

} // namespace vantrell
