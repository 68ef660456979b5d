// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11FrameSource.h"

#include "Platform/ScreenError.h"
#include "Support/HostTime.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// A program that sets the pointer's place moves no device; looking four times a second finds that, and while
/// the place was found to change, looking goes on at the frame rate.
constexpr double pointerLookInterval = 0.25;
constexpr double movingPointerLookInterval = 1.0 / 60;
constexpr int mostRefusals = 200;

} // namespace

std::expected<void, PlatformError> X11FrameSource::connect() {
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    m_x11 = std::move(*connection);
    if (!m_showsCursor)
        return {};
    auto cursor = X11Cursor::create(*m_x11);
    if (!cursor)
        return std::unexpected(cursor.error());
    m_cursor.emplace(std::move(*cursor));
    return {};
}

PlatformError X11FrameSource::unsupportedPixels() {
    return screenError(ScreenErrorCode::unsupportedPixels,
                       "The display's pixel format is not supported (24 bit colour is)");
}

void X11FrameSource::noteChange(double hostTime) {
    if (!m_changedAt)
        m_changedAt = hostTime;
}

double X11FrameSource::takeChangeTime() {
    return std::exchange(m_changedAt, std::nullopt).value_or(hostNow());
}

void X11FrameSource::handleEvents(xcb_generic_event_t *(*poll)(xcb_connection_t *)) {
    while (const XcbPointer<xcb_generic_event_t> event{poll(xcb())}) {
        const double now = hostNow();
        double when = now;
        if (m_cursor && m_cursor->handles(*event, now, when))
            noteChange(when);
        else
            handle(*event, now);
    }
}

std::expected<FrameWait, PlatformError> X11FrameSource::wait(double notBefore,
                                                             std::optional<double> deadline) {
    while (hostNow() < notBefore) {
        if (m_wakeup.wait(-1, notBefore))
            return FrameWait::interrupted;
    }
    for (;;) {
        handleEvents(xcb_poll_for_event);
        if (m_x11->isBroken())
            return std::unexpected(X11Connection::lostError());
        if (auto reason = ended())
            return std::unexpected(std::move(*reason));
        const double now = hostNow();
        if (m_cursor && now >= m_nextPointerLook)
            noteChange(now);
        if (const auto at = looksAt(); at && now >= *at)
            look(now);
        if (m_changedAt)
            return FrameWait::changed;
        if (deadline && now >= *deadline)
            return FrameWait::timedOut;
        std::optional<double> until = deadline;
        if (m_cursor)
            until = std::min(until.value_or(m_nextPointerLook), m_nextPointerLook);
        if (const auto at = looksAt())
            until = std::min(until.value_or(*at), *at);
        if (const auto end = endsAt())
            until = std::min(until.value_or(*end), *end);
        xcb_flush(xcb());
        if (m_wakeup.wait(m_x11->fd(), until))
            return FrameWait::interrupted;
    }
}

std::expected<void, PlatformError> X11FrameSource::pictureRefused() {
    if (++m_refusals > mostRefusals)
        return std::unexpected(
            screenError(ScreenErrorCode::connectionLost, "The display server refuses to be captured"));
    noteChange(hostNow());
    return {};
}

void X11FrameSource::askForPointer() {
    if (m_cursor)
        m_cursor->beginUpdate(*m_x11);
}

bool X11FrameSource::pointerMoved(PixelRect &before) {
    if (!m_cursor)
        return false;
    before = m_cursor->rect();
    const bool moved = m_cursor->finishUpdate(*m_x11);
    m_nextPointerLook = hostNow() + (moved ? movingPointerLookInterval : pointerLookInterval);
    return moved;
}

} // namespace vantrell
