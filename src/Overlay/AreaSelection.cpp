// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/AreaSelection.h"

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

/// What cannot be committed: a little less than what a drag leaves.
constexpr double tooSmall = 3;

/// One axis of a rectangle that is pulled from a fixed place towards the pointer.
struct Span {
    double fixed = 0;
    double length = 0;
    /// The longest that the bounds allow.
    double room = 0;
    bool isCentred = false;
    bool isForward = true;

    static Span pulled(double fixed, double to, double limit, bool isCentred) {
        const double at = std::clamp(to, 0.0, limit);
        Span span{.fixed = fixed, .isCentred = isCentred, .isForward = at >= fixed};
        span.room = isCentred ? 2 * std::min(fixed, limit - fixed) : span.isForward ? limit - fixed : fixed;
        span.length = std::min(span.room, std::abs(at - fixed) * (isCentred ? 2 : 1));
        return span;
    }
    double start() const { return isCentred ? fixed - length / 2 : isForward ? fixed : fixed - length; }
};

Rect rectOf(const Span &across, const Span &down) {
    return {across.start(), down.start(), across.length, down.length};
}

/// Makes the width `ratio` times the height, as large as the larger of both wants and the bounds allow.
void applyRatio(Span &across, Span &down, double ratio) {
    double width = std::max(across.length, down.length * ratio);
    width = std::min({width, across.room, down.room * ratio});
    across.length = width;
    down.length = width / ratio;
}

bool isNear(double a, double b) {
    return std::abs(a - b) <= AreaSelection::reach;
}

} // namespace

void AreaSelection::setRect(const std::optional<Rect> &rect) {
    m_rect = rect;
    m_drag.reset();
}

AreaZone AreaSelection::areaZone(const Point &at) const {
    if (captureButtonRect && contains(*captureButtonRect, at))
        return {AreaZone::CaptureButton{}};
    if (recordButtonRect && contains(*recordButtonRect, at))
        return {AreaZone::RecordButton{}};
    if (!m_rect)
        return {AreaZone::Outside{}};
    if (contains(grown(*m_rect, reach), at) && !contains(grown(*m_rect, -reach), at)) {
        AreaZone::Resize resize;
        if (isNear(at.x, m_rect->x))
            resize.anchorX = m_rect->maxX();
        else if (isNear(at.x, m_rect->maxX()))
            resize.anchorX = m_rect->x;
        if (isNear(at.y, m_rect->y))
            resize.anchorY = m_rect->maxY();
        else if (isNear(at.y, m_rect->maxY()))
            resize.anchorY = m_rect->y;
        if (resize.anchorX || resize.anchorY)
            return {resize};
    }
    if (contains(*m_rect, at))
        return {AreaZone::Move{}};
    return {AreaZone::Outside{}};
}

Rect AreaSelection::clampedToBounds(const Rect &rect) const {
    const double width = std::min(rect.width, m_bounds.width);
    const double height = std::min(rect.height, m_bounds.height);
    return {std::min(m_bounds.width - width, std::max(rect.x, 0.0)),
            std::min(m_bounds.height - height, std::max(rect.y, 0.0)), width, height};
}

void AreaSelection::press(const Point &at) {
    const AreaZone zone = areaZone(at);
    m_pointer = at;
    m_grip = {};
    m_ratio.reset();
    if (zone.is<AreaZone::Outside>()) {
        const Point anchor{std::clamp(at.x, 0.0, m_bounds.width), std::clamp(at.y, 0.0, m_bounds.height)};
        m_rect = Rect{anchor.x, anchor.y, 0, 0};
        m_drag = Drag{Drag::Draw{anchor}};
    } else if (zone.is<AreaZone::Move>()) {
        m_drag = Drag{Drag::Move{{at.x - m_rect->x, at.y - m_rect->y}, {m_rect->width, m_rect->height}}};
    } else if (const auto *resize = std::get_if<AreaZone::Resize>(&zone.kind)) {
        if (resize->anchorX)
            m_grip.x = (*resize->anchorX == m_rect->x ? m_rect->maxX() : m_rect->x) - at.x;
        if (resize->anchorY)
            m_grip.y = (*resize->anchorY == m_rect->y ? m_rect->maxY() : m_rect->y) - at.y;
        m_drag = Drag{Drag::Resize{resize->anchorX, resize->anchorY, *m_rect}};
    }
}

void AreaSelection::dragTo(const Point &at, const Modifiers &modifiers) {
    if (!m_drag)
        return;
    if (auto *drawn = std::get_if<Drag::Draw>(&m_drag->kind)) {
        if (modifiers.movesWhole)
            moveDrawn(*drawn, at);
        else
            draw(*drawn, at, modifiers);
    } else if (const auto *resized = std::get_if<Drag::Resize>(&m_drag->kind)) {
        resize(*resized, at, modifiers);
    } else {
        m_rect = clampedToBounds(movedTo(at));
    }
    m_pointer = at;
}

Rect AreaSelection::movedTo(const Point &at) const {
    const auto *move = m_drag ? std::get_if<Drag::Move>(&m_drag->kind) : nullptr;
    if (!move)
        return m_rect.value_or(Rect());
    return {at.x - move->offset.x, at.y - move->offset.y, move->size.width, move->size.height};
}

void AreaSelection::draw(const Drag::Draw &draw, const Point &at, const Modifiers &modifiers) {
    Span across = Span::pulled(draw.anchor.x, at.x, m_bounds.width, modifiers.fromCentre);
    Span down = Span::pulled(draw.anchor.y, at.y, m_bounds.height, modifiers.fromCentre);
    if (!modifiers.keepsRatio)
        m_ratio.reset();
    else if (!m_ratio)
        m_ratio =
            m_rect->width >= leastSide && m_rect->height >= leastSide ? m_rect->width / m_rect->height : 1;
    if (m_ratio)
        applyRatio(across, down, *m_ratio);
    m_rect = rectOf(across, down);
}

void AreaSelection::resize(const Drag::Resize &resize, const Point &at, const Modifiers &modifiers) {
    const Rect &original = resize.original;
    const Point middle{original.x + original.width / 2, original.y + original.height / 2};
    const auto pulled = [&](const std::optional<double> &anchor, double to, double centre, double start,
                            double length, double limit) {
        if (anchor)
            return Span::pulled(modifiers.fromCentre ? centre : *anchor, to, limit, modifiers.fromCentre);
        if (!modifiers.keepsRatio)
            return Span{start, length, length, false, true};
        Span span = Span::pulled(centre, centre, limit, true);
        span.length = 0;
        return span;
    };
    Span across =
        pulled(resize.anchorX, at.x + m_grip.x, middle.x, original.x, original.width, m_bounds.width);
    Span down =
        pulled(resize.anchorY, at.y + m_grip.y, middle.y, original.y, original.height, m_bounds.height);
    if (modifiers.keepsRatio && original.width > 0 && original.height > 0)
        applyRatio(across, down, original.width / original.height);
    m_rect = rectOf(across, down);
}

void AreaSelection::moveDrawn(Drag::Draw &draw, const Point &at) {
    const Rect before = *m_rect;
    m_rect = clampedToBounds(
        {before.x + at.x - m_pointer.x, before.y + at.y - m_pointer.y, before.width, before.height});
    draw.anchor.x += m_rect->x - before.x;
    draw.anchor.y += m_rect->y - before.y;
}

bool AreaSelection::release() {
    m_drag.reset();
    m_ratio.reset();
    if (m_rect && (m_rect->width < leastSide || m_rect->height < leastSide))
        m_rect.reset();
    return m_rect.has_value();
}

void AreaSelection::moveBy(double across, double down) {
    if (m_rect)
        m_rect = clampedToBounds({m_rect->x + across, m_rect->y + down, m_rect->width, m_rect->height});
}

void AreaSelection::stretchBy(double across, double down) {
    if (!m_rect)
        return;
    const auto stretched = [](double length, double by, double room) {
        return std::min(room, std::max(leastSide, length + by));
    };
    m_rect->width = stretched(m_rect->width, across, m_bounds.width - m_rect->x);
    m_rect->height = stretched(m_rect->height, down, m_bounds.height - m_rect->y);
}

void AreaSelection::selectMiddle() {
    setRect(integral({m_bounds.width / 4, m_bounds.height / 4, m_bounds.width / 2, m_bounds.height / 2}));
}

std::optional<Rect> AreaSelection::committed() const {
    if (!m_rect || !(m_rect->width > tooSmall && m_rect->height > tooSmall))
        return std::nullopt;
    return integral(*m_rect);
}

} // namespace vantrell
