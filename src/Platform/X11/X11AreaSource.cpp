// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11AreaSource.h"

#include "Platform/ScreenError.h"
#include "Support/HostTime.h"

#include <utility>

namespace vantrell {
namespace {

/// More patches than this cost more in requests than the pixels between them.
constexpr int mostPatches = 12;
/// The desktop's size changes now and then under a fetch; a server that refuses for ever is broken.
constexpr int mostFailedFetches = 200;

} // namespace

X11AreaSource::X11AreaSource(const PixelRect &area, bool showsCursor)
    : X11FrameSource(showsCursor), m_area(area), m_stale(area.size()) {}

std::expected<void, PlatformError> X11AreaSource::open() {
    if (auto connected = connect(); !connected)
        return connected;
    if (!hasBgrxPixels(x11().screen().root_visual))
        return std::unexpected(unsupportedPixels());
    m_desktop = {x11().screen().width_in_pixels, x11().screen().height_in_pixels};
    constexpr std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb(), x11().root(), XCB_CW_EVENT_MASK, &structure);

    auto reader = X11PatchReader::create(x11(), m_area.size());
    if (!reader)
        return std::unexpected(reader.error());
    m_reader.emplace(std::move(*reader));
    auto damage = X11Damage::create(x11(), x11().root());
    if (!damage)
        return std::unexpected(damage.error());
    m_damage = *damage;
    xcb_flush(xcb());
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    m_stale.markAll();
    noteChange(hostNow());
    return {};
}

void X11AreaSource::handle(const xcb_generic_event_t &event, double now) {
    double when = now;
    if (m_damage->handles(event, now, when)) {
        noteChange(when);
    } else if ((event.response_type & ~X11Connection::sentEventBit) == XCB_CONFIGURE_NOTIFY) {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        m_desktop = {configured.width, configured.height};
        m_stale.markAll();
        noteChange(now);
    }
}

PixelRect X11AreaSource::onPicture(const PixelRect &desktop) const {
    return {desktop.x - m_area.x, desktop.y - m_area.y, desktop.width, desktop.height};
}

std::expected<FrameUpdate, PlatformError> X11AreaSource::fetch() {
    const double changedAt = takeChangeTime();
    m_damage->ask();
    askForPointer();
    if (!m_damage->answer([this](const PixelRect &rect) { m_stale.mark(onPicture(rect)); }))
        return std::unexpected(X11Connection::lostError());
    if (PixelRect before; pointerMoved(before)) {
        m_stale.mark(onPicture(before));
        m_stale.mark(onPicture(cursor()->rect()));
    }

    const auto patches =
        m_reader->read({.drawable = x11().root(), .drawableSize = m_desktop, .x = m_area.x, .y = m_area.y},
                       m_stale.rectangles(mostPatches));
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!patches) {
        // The desktop has just become smaller: its new size is among the events that wait.
        if (++m_failedFetches > mostFailedFetches)
            return std::unexpected(
                screenError(ScreenErrorCode::connectionLost, "The display server refuses to be captured"));
        noteChange(hostNow());
        return FrameUpdate{changedAt, {}};
    }
    m_failedFetches = 0;
    m_stale.clear();
    if (cursor()) {
        for (const FramePatch &patch : *patches)
            cursor()->draw(
                {patch.rect.x + m_area.x, patch.rect.y + m_area.y, patch.rect.width, patch.rect.height},
                m_reader->writable(patch), patch.stride);
    }
    return FrameUpdate{changedAt, *patches};
}

} // namespace vantrell
