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
/// While displays are arranged anew, each of them may be switched off for a moment.
constexpr double displayPatience = 1.5;

PlatformError displayGone() {
    return screenError(ScreenErrorCode::displayGone, "The recorded display was disconnected");
}

} // namespace

X11AreaSource::X11AreaSource(std::shared_ptr<X11AreaPlace> place, bool showsCursor)
    : X11FrameSource(showsCursor), m_place(std::move(place)) {}

std::expected<void, PlatformError> X11AreaSource::open() {
    if (auto connected = connect(); !connected)
        return connected;
    if (!hasBgrxPixels(x11().screen().root_visual))
        return std::unexpected(unsupportedPixels());
    m_desktop = {x11().screen().width_in_pixels, x11().screen().height_in_pixels};
    constexpr std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb(), x11().root(), XCB_CW_EVENT_MASK, &structure);
    if (auto watching = watchMonitors(); !watching)
        return watching;
    m_area = m_place->place();
    m_stale = BlockMap(m_area.size());

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

std::expected<void, PlatformError> X11AreaSource::watchMonitors() {
    const xcb_query_extension_reply_t *randr = xcb_get_extension_data(xcb(), &xcb_randr_id);
    if (!randr || !randr->present)
        return {};
    xcb_discard_reply(xcb(), xcb_randr_query_version(xcb(), 1, 5).sequence);
    xcb_randr_select_input(xcb(), x11().root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    // After the selection: what changed before it makes no event.
    const auto monitors = listX11Monitors(x11());
    if (monitors.empty())
        return {};
    m_firstMonitorEvent = randr->first_event;
    if (!m_place->follow(monitors))
        return std::unexpected(displayGone());
    return {};
}

void X11AreaSource::handle(const xcb_generic_event_t &event, double now) {
    double when = now;
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    if (m_damage->handles(event, now, when)) {
        noteChange(when);
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        m_desktop = {configured.width, configured.height};
        m_monitorsChanged = true;
        m_stale.markAll();
        noteChange(now);
    } else if (m_firstMonitorEvent && (type == *m_firstMonitorEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                       type == *m_firstMonitorEvent + XCB_RANDR_NOTIFY)) {
        m_monitorsChanged = true;
        noteChange(now);
    }
}

std::optional<PlatformError> X11AreaSource::ended() const {
    const auto end = endsAt();
    return end && hostNow() >= *end ? std::optional(displayGone()) : std::nullopt;
}

std::optional<double> X11AreaSource::endsAt() const {
    return m_goneSince ? std::optional(*m_goneSince + displayPatience) : std::nullopt;
}

std::expected<void, PlatformError> X11AreaSource::followDisplay() {
    if (!std::exchange(m_monitorsChanged, false) || !m_firstMonitorEvent)
        return {};
    const bool isThere = m_place->follow(listX11Monitors(x11()));
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!isThere) {
        m_goneSince = m_goneSince.value_or(hostNow());
        return {};
    }
    m_goneSince.reset();
    const PixelRect area = m_place->place();
    if (area.size() != m_area.size()) {
        if (auto reserved = m_reader->reserve(area.size()); !reserved)
            return reserved;
        m_stale = BlockMap(area.size());
    }
    m_area = area;
    m_stale.markAll();
    return {};
}

PixelRect X11AreaSource::onPicture(const PixelRect &desktop) const {
    return {desktop.x - m_area.x, desktop.y - m_area.y, desktop.width, desktop.height};
}

FrameUpdate X11AreaSource::update(double changedAt, std::span<const FramePatch> patches) const {
    return {.hostTime = changedAt, .size = m_area.size(), .content = patches, .pointer = {}};
}

std::expected<FrameUpdate, PlatformError> X11AreaSource::fetch() {
    const double changedAt = takeChangeTime();
    if (auto followed = followDisplay(); !followed)
        return std::unexpected(followed.error());
    // What is in its place now is another display's.
    if (m_goneSince)
        return update(changedAt, {});
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
        if (auto refused = pictureRefused(); !refused)
            return std::unexpected(refused.error());
        return update(changedAt, {});
    }
    pictureRead();
    // Displays that moved before these pixels were read have told so by now.
    handleReceivedEvents();
    if (m_monitorsChanged)
        return update(changedAt, {});
    m_stale.clear();
    if (cursor()) {
        for (const FramePatch &patch : *patches)
            cursor()->draw(
                {patch.rect.x + m_area.x, patch.rect.y + m_area.y, patch.rect.width, patch.rect.height},
                m_reader->writable(patch), patch.stride);
    }
    return update(changedAt, *patches);
}

} // namespace vantrell
