// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11FrameSource.h"

#include "Platform/ScreenError.h"
#include "Support/HostTime.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vantrell {
namespace {

constexpr int bytesPerPixel = 4;
/// More patches than this cost more in requests than the pixels between them.
constexpr int mostPatches = 12;
/// A program that sets the pointer's place moves no device; looking four times a second finds that, and while
/// the place was found to change, looking goes on at the frame rate.
constexpr double pointerLookInterval = 0.25;
constexpr double movingPointerLookInterval = 1.0 / 60;
/// The desktop's size changes now and then under a fetch; a server that refuses for ever is broken.
constexpr int mostFailedFetches = 200;

/// Blue, green, red, unused: what everything after the capture works on.
bool hasBgrxPixels(const X11Connection &connection) {
    const xcb_screen_t &screen = connection.screen();
    if (xcb_get_setup(connection.xcb())->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        return false;
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == screen.root_visual)
                return (depths.data->depth == 24 || depths.data->depth == 32) &&
                       visuals.data->red_mask == 0xff0000 && visuals.data->green_mask == 0xff00 &&
                       visuals.data->blue_mask == 0xff;
        }
    }
    return false;
}

} // namespace

X11FrameSource::X11FrameSource(const PixelRect &area, bool showsCursor)
    : m_area(area), m_showsCursor(showsCursor) {}

X11FrameSource::~X11FrameSource() = default;

std::expected<void, PlatformError> X11FrameSource::open() {
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    m_x11 = std::move(*connection);
    xcb_connection_t *xcb = m_x11->xcb();
    if (!hasBgrxPixels(*m_x11))
        return std::unexpected(screenError(ScreenErrorCode::unsupportedPixels,
                                           "The display's pixel format is not supported (24 bit colour is)"));
    const auto shm = m_x11->require(&xcb_shm_id, "MIT-SHM");
    if (!shm)
        return std::unexpected(shm.error());
    const auto damage = m_x11->require(&xcb_damage_id, "DAMAGE");
    if (!damage)
        return std::unexpected(damage.error());
    const auto fixes = m_x11->require(&xcb_xfixes_id, "XFIXES");
    if (!fixes)
        return std::unexpected(fixes.error());
    m_firstDamageEvent = (*damage)->first_event;
    xcb_discard_reply(xcb, xcb_damage_query_version(xcb, 1, 1).sequence);
    xcb_discard_reply(xcb, xcb_xfixes_query_version(xcb, 5, 0).sequence);

    m_desktop = {m_x11->screen().width_in_pixels, m_x11->screen().height_in_pixels};
    constexpr std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, m_x11->root(), XCB_CW_EVENT_MASK, &structure);
    if (m_showsCursor) {
        auto cursor = X11Cursor::create(*m_x11);
        if (!cursor)
            return std::unexpected(cursor.error());
        m_cursor.emplace(std::move(*cursor));
    }
    auto memory =
        ShmSegment::create(*m_x11, std::size_t(m_area.width) * std::size_t(m_area.height) * bytesPerPixel);
    if (!memory)
        return std::unexpected(memory.error());
    m_memory = std::move(*memory);

    m_region = xcb_generate_id(xcb);
    xcb_xfixes_create_region(xcb, m_region, 0, nullptr);
    m_damage = xcb_generate_id(xcb);
    xcb_damage_create(xcb, m_damage, m_x11->root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_flush(xcb);

    m_stale = BlockMap(m_area.size());
    m_stale.markAll();
    noteChange(hostNow());
    if (m_x11->isBroken())
        return std::unexpected(X11Connection::lostError());
    return {};
}

void X11FrameSource::noteChange(double hostTime) {
    if (!m_changedAt)
        m_changedAt = hostTime;
}

void X11FrameSource::drainEvents() {
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_x11->xcb())})
        handle(*event);
}

void X11FrameSource::handle(const xcb_generic_event_t &event) {
    const double now = hostNow();
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    double when = now;
    if (type == m_firstDamageEvent + XCB_DAMAGE_NOTIFY) {
        m_damaged = true;
        noteChange(X11Connection::hostTime(
            reinterpret_cast<const xcb_damage_notify_event_t &>(event).timestamp, now));
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if (configured.window == m_x11->root()) {
            m_desktop = {configured.width, configured.height};
            m_stale.markAll();
            noteChange(now);
        }
    } else if (m_cursor && m_cursor->handles(event, now, when)) {
        noteChange(when);
    }
}

std::expected<FrameWait, PlatformError> X11FrameSource::wait(double notBefore,
                                                             std::optional<double> deadline) {
    while (hostNow() < notBefore) {
        if (m_wakeup.wait(-1, notBefore))
            return FrameWait::interrupted;
    }
    for (;;) {
        drainEvents();
        if (m_x11->isBroken())
            return std::unexpected(X11Connection::lostError());
        const double now = hostNow();
        if (m_cursor && now >= m_nextPointerLook)
            noteChange(now);
        if (m_changedAt)
            return FrameWait::changed;
        if (deadline && now >= *deadline)
            return FrameWait::timedOut;
        std::optional<double> until = deadline;
        if (m_cursor)
            until = std::min(until.value_or(m_nextPointerLook), m_nextPointerLook);
        xcb_flush(m_x11->xcb());
        if (m_wakeup.wait(m_x11->fd(), until))
            return FrameWait::interrupted;
    }
}

PixelRect X11FrameSource::onPicture(const PixelRect &desktop) const {
    return {desktop.x - m_area.x, desktop.y - m_area.y, desktop.width, desktop.height};
}

std::expected<void, PlatformError> X11FrameSource::collectChanges() {
    xcb_connection_t *xcb = m_x11->xcb();
    xcb_xfixes_fetch_region_cookie_t regionCookie{};
    if (m_damaged) {
        xcb_damage_subtract(xcb, m_damage, XCB_NONE, m_region);
        regionCookie = xcb_xfixes_fetch_region(xcb, m_region);
    }
    if (m_cursor)
        m_cursor->beginUpdate(*m_x11);
    if (m_damaged) {
        m_damaged = false;
        const XcbPointer<xcb_xfixes_fetch_region_reply_t> region(
            xcb_xfixes_fetch_region_reply(xcb, regionCookie, nullptr));
        if (!region)
            return std::unexpected(X11Connection::lostError());
        const xcb_rectangle_t *rects = xcb_xfixes_fetch_region_rectangles(region.get());
        const int count = xcb_xfixes_fetch_region_rectangles_length(region.get());
        for (int i = 0; i < count; ++i)
            m_stale.mark(onPicture({rects[i].x, rects[i].y, rects[i].width, rects[i].height}));
    }
    if (m_cursor) {
        const double now = hostNow();
        const PixelRect before = m_cursor->rect();
        const bool moved = m_cursor->finishUpdate(*m_x11);
        if (moved) {
            m_stale.mark(onPicture(before));
            m_stale.mark(onPicture(m_cursor->rect()));
        }
        m_nextPointerLook = now + (moved ? movingPointerLookInterval : pointerLookInterval);
    }
    return {};
}

std::expected<void, PlatformError> X11FrameSource::fetchStale() {
    xcb_connection_t *xcb = m_x11->xcb();
    struct Request {
        xcb_shm_get_image_cookie_t cookie;
        PixelRect part;
    };
    std::vector<Request> requests;
    std::size_t offset = 0;
    const PixelRect desktop{0, 0, m_desktop.width, m_desktop.height};
    for (const PixelRect &rect : m_stale.rectangles(mostPatches)) {
        const PixelRect wanted{rect.x + m_area.x, rect.y + m_area.y, rect.width, rect.height};
        const PixelRect part = intersection(wanted, desktop);
        const std::size_t bytes = std::size_t(rect.width) * std::size_t(rect.height) * bytesPerPixel;
        std::uint8_t *pixels = m_memory->data() + offset;
        m_patches.push_back({rect, pixels, std::ptrdiff_t(rect.width) * bytesPerPixel});
        if (part != wanted)
            std::memset(pixels, 0, bytes);
        if (!part.isEmpty() && part.size() == wanted.size()) {
            requests.push_back(
                {xcb_shm_get_image(xcb, m_x11->root(), std::int16_t(part.x), std::int16_t(part.y),
                                   std::uint16_t(part.width), std::uint16_t(part.height), ~0u,
                                   XCB_IMAGE_FORMAT_Z_PIXMAP, m_memory->id(), std::uint32_t(offset)),
                 part});
        } else if (!part.isEmpty()) {
            // The server packs what it writes: rows that reach over the desktop's edge come one by one.
            for (int y = part.y; y < part.bottom(); ++y) {
                const std::size_t at = offset + (std::size_t(y - wanted.y) * std::size_t(rect.width) +
                                                 std::size_t(part.x - wanted.x)) *
                                                    bytesPerPixel;
                requests.push_back(
                    {xcb_shm_get_image(xcb, m_x11->root(), std::int16_t(part.x), std::int16_t(y),
                                       std::uint16_t(part.width), 1, ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                       m_memory->id(), std::uint32_t(at)),
                     part});
            }
        }
        offset += bytes;
    }
    bool refused = false;
    for (const Request &request : requests) {
        const XcbPointer<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(xcb, request.cookie, nullptr));
        refused |= !reply;
    }
    if (m_x11->isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!refused) {
        m_stale.clear();
        m_failedFetches = 0;
        return {};
    }
    // The desktop has just become smaller: its new size is among the events that wait.
    m_patches.clear();
    noteChange(hostNow());
    if (++m_failedFetches > mostFailedFetches)
        return std::unexpected(
            screenError(ScreenErrorCode::connectionLost, "The display server refuses to be captured"));
    return {};
}

std::expected<FrameUpdate, PlatformError> X11FrameSource::fetch() {
    m_patches.clear();
    const double changedAt = std::exchange(m_changedAt, std::nullopt).value_or(hostNow());
    if (auto collected = collectChanges(); !collected)
        return std::unexpected(collected.error());
    if (auto fetched = fetchStale(); !fetched)
        return std::unexpected(fetched.error());
    if (m_cursor) {
        for (const FramePatch &patch : m_patches) {
            const PixelRect onDesktop{patch.rect.x + m_area.x, patch.rect.y + m_area.y, patch.rect.width,
                                      patch.rect.height};
            m_cursor->draw(onDesktop, m_memory->data() + (patch.pixels - m_memory->data()), patch.stride);
        }
    }
    return FrameUpdate{changedAt, m_patches};
}

} // namespace vantrell
