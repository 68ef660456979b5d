// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowSource.h"

#include "Platform/ScreenError.h"
#include "Support/HostTime.h"

#include <xcb/composite.h>

#include <string>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostWindowPatches = 12;
/// At a window that is being resized just now.
constexpr int mostLooks = 3;

} // namespace

X11WindowSource::X11WindowSource(xcb_window_t window, bool showsCursor)
    : X11FrameSource(showsCursor), m_window(window) {}

std::expected<void, PlatformError> X11WindowSource::open() {
    if (auto connected = connect(); !connected)
        return connected;
    const auto composite = x11().require(&xcb_composite_id, "Composite");
    if (!composite)
        return std::unexpected(composite.error());
    const auto place = X11WindowPlace::of(x11(), m_window);
    if (!place || place->isInputOnly)
        return std::unexpected(
            screenError(ScreenErrorCode::noSuchWindow, "There is no window " + std::to_string(m_window)));
    if (!x11().hasBgrxPixels(place->visual))
        return std::unexpected(unsupportedPixels());
    xcb_discard_reply(xcb(), xcb_composite_query_version(xcb(), 0, 4).sequence);
    constexpr std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb(), m_window, XCB_CW_EVENT_MASK, &structure);
    xcb_composite_redirect_window(xcb(), m_window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    auto damage = X11Damage::create(x11(), m_window);
    if (!damage)
        return std::unexpected(damage.error());
    m_damage = *damage;
    m_content = {0, 0, place->content.width, place->content.height};
    m_stale = BlockMap(m_content.size());
    auto reader = X11PatchReader::create(x11(), m_content.size());
    if (!reader)
        return std::unexpected(reader.error());
    m_reader.emplace(std::move(*reader));
    xcb_flush(xcb());
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    noteChange(hostNow());
    return {};
}

void X11WindowSource::handle(const xcb_generic_event_t &event, double now) {
    double when = now;
    if (m_damage->handles(event, now, when)) {
        noteChange(when);
        return;
    }
    switch (event.response_type & ~X11Connection::sentEventBit) {
    case XCB_DESTROY_NOTIFY:
        m_isClosed |= reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window == m_window;
        break;
    case XCB_MAP_NOTIFY:
        m_stale.markAll();
        [[fallthrough]];
    case XCB_CONFIGURE_NOTIFY:
    case XCB_REPARENT_NOTIFY:
        m_isOutdated = true;
        noteChange(now);
        break;
    default:
        break;
    }
}

std::optional<PlatformError> X11WindowSource::ended() const {
    if (!m_isClosed)
        return std::nullopt;
    return screenError(ScreenErrorCode::windowClosed, "The recorded window was closed");
}

bool X11WindowSource::renew() {
    m_isOutdated = false;
    for (int left = mostLooks; left > 0; --left) {
        const xcb_pixmap_t pixmap = xcb_generate_id(xcb());
        const auto named = xcb_composite_name_window_pixmap_checked(xcb(), m_window, pixmap);
        const auto asked = xcb_get_geometry(xcb(), pixmap);
        const auto place = X11WindowPlace::of(x11(), m_window);
        const XcbPointer<xcb_generic_error_t> refused(xcb_request_check(xcb(), named));
        const auto size = xcbReply(xcb(), asked, xcb_get_geometry_reply);
        if (place)
            m_place = place->content;
        // A window that is not shown has no pixels; those that it had last stay.
        if (refused || !place || !size)
            break;
        const PixelSize wanted{place->window.width + 2 * place->borderWidth,
                               place->window.height + 2 * place->borderWidth};
        if (const PixelSize had{size->width, size->height}; had == wanted || left == 1) {
            if (m_pixmap != XCB_NONE)
                xcb_free_pixmap(xcb(), m_pixmap);
            m_pixmap = pixmap;
            take(*place, had);
            break;
        }
        // It was resized between the two questions.
        xcb_free_pixmap(xcb(), pixmap);
    }
    return m_pixmap != XCB_NONE;
}

void X11WindowSource::take(const X11WindowPlace &place, PixelSize pixmap) {
    m_border = place.borderWidth;
    const PixelRect content = intersection({0, 0, pixmap.width, pixmap.height},
                                           {place.borderWidth + place.content.x - place.window.x,
                                            place.borderWidth + place.content.y - place.window.y,
                                            place.content.width, place.content.height});
    // After a move alone everything else is as it was.
    if (pixmap == m_pixmapSize && content == m_content)
        return;
    m_pixmapSize = pixmap;
    m_content = content;
    m_stale = BlockMap(content.size());
    m_stale.markAll();
}

FrameUpdate X11WindowSource::update(double changedAt, std::span<const FramePatch> patches) const {
    // Without pixels that were ever there it has no size either.
    const PixelSize size = m_pixmap == XCB_NONE ? PixelSize() : m_content.size();
    return {.hostTime = changedAt, .size = size, .content = patches, .pointer = {}};
}

std::expected<FrameUpdate, PlatformError> X11WindowSource::fetch() {
    const double changedAt = takeChangeTime();
    m_damage->ask();
    askForPointer();
    const auto markDamage = [this](const PixelRect &rect) {
        // The pixmap has the window's border around it, the damage has not.
        m_stale.mark(
            {rect.x + m_border - m_content.x, rect.y + m_border - m_content.y, rect.width, rect.height});
    };
    if (!m_damage->answer(markDamage))
        return std::unexpected(X11Connection::lostError());
    PixelRect before;
    const bool moved = pointerMoved(before);
    const bool isShown = !m_isOutdated || renew();
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!isShown || m_content.isEmpty())
        return update(changedAt, {});
    if (moved) {
        m_stale.mark({before.x - m_place.x, before.y - m_place.y, before.width, before.height});
        const PixelRect &now = cursor()->rect();
        m_stale.mark({now.x - m_place.x, now.y - m_place.y, now.width, now.height});
    }
    return read(changedAt);
}

std::expected<FrameUpdate, PlatformError> X11WindowSource::read(double changedAt) {
    if (auto reserved = m_reader->reserve(m_content.size()); !reserved)
        return std::unexpected(reserved.error());
    const auto patches = m_reader->read(
        {.drawable = m_pixmap, .drawableSize = m_pixmapSize, .x = m_content.x, .y = m_content.y},
        m_stale.rectangles(mostWindowPatches));
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!patches) {
        m_isOutdated = true;
        if (auto refused = pictureRefused(); !refused)
            return std::unexpected(refused.error());
        return update(changedAt, {});
    }
    pictureRead();
    m_stale.clear();
    for (const FramePatch &patch : *patches)
        drawPointer(patch);
    return update(changedAt, *patches);
}

void X11WindowSource::drawPointer(const FramePatch &patch) {
    if (cursor())
        cursor()->draw(
            {patch.rect.x + m_place.x, patch.rect.y + m_place.y, patch.rect.width, patch.rect.height},
            m_reader->writable(patch), patch.stride);
}

} // namespace vantrell
