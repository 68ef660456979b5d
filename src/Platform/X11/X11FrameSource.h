// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Cursor.h"
#include "Platform/X11/X11Wakeup.h"

#include <memory>
#include <optional>

namespace vantrell {

/// What all pictures taken from an X server have in common: a connection of the capture thread's own,
/// sleeping until an event tells of a change, and the pointer, which is drawn into the pixels only when asked
/// for and whose movements are then changes (XFIXES, XInput 2).
class X11FrameSource : public FrameSource {
public:
    std::expected<FrameWait, PlatformError> wait(double notBefore, std::optional<double> deadline) final;
    void interrupt() final { m_wakeup.interrupt(); }

protected:
    explicit X11FrameSource(bool showsCursor) : m_showsCursor(showsCursor) {}

    std::expected<void, PlatformError> connect();
    const X11Connection &x11() const { return *m_x11; }
    xcb_connection_t *xcb() const { return m_x11->xcb(); }

    /// Called for every event but the pointer's; reports changes through `noteChange`.
    virtual void handle(const xcb_generic_event_t &event, double now) = 0;
    /// Why there will be no more pictures, once that is so.
    virtual std::optional<PlatformError> ended() const { return std::nullopt; }
    /// When `ended` is to be asked although no event came (host time).
    virtual std::optional<double> endsAt() const { return std::nullopt; }

    /// When `look` is to be called although no event came (host time).
    virtual std::optional<double> looksAt() const { return std::nullopt; }
    /// Notes what has changed by the passing of time.
    virtual void look(double /*now*/) {}

    /// Handles what came with the answers to earlier questions: it happened before the last of them.
    void handleReceivedEvents() { handleEvents(xcb_poll_for_queued_event); }

    /// There is something to fetch since `hostTime`.
    void noteChange(double hostTime);
    /// When the first of the changes happened that are fetched now.
    double takeChangeTime();

    /// The server has refused a picture, as it does when something has just changed its size. An error once
    /// it refuses for ever.
    std::expected<void, PlatformError> pictureRefused();
    void pictureRead() { m_refusals = 0; }

    /// The pointer; none when it is not wanted.
    X11Cursor *cursor() { return m_cursor ? &*m_cursor : nullptr; }
    /// Sends the pointer's questions together with others.
    void askForPointer();
    /// Takes the answers; true when it has moved or changed. `before` is where it was.
    bool pointerMoved(PixelRect &before);

    static PlatformError unsupportedPixels();

private:
    void handleEvents(xcb_generic_event_t *(*poll)(xcb_connection_t *));

    bool m_showsCursor;
    X11Wakeup m_wakeup;
    std::unique_ptr<X11Connection> m_x11;
    std::optional<X11Cursor> m_cursor;
    std::optional<double> m_changedAt;
    int m_refusals = 0;
    /// When the pointer is looked at next although no device reported a movement.
    double m_nextPointerLook = 0;
};

} // namespace vantrell
