// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Damage.h"

#include <limits>
#include <utility>
#include <vector>

namespace vantrell {

std::expected<X11Damage, PlatformError> X11Damage::create(const X11Connection &connection,
                                                          xcb_window_t window, Events events) {
    const auto damageExtension = connection.require(&xcb_damage_id, "DAMAGE");
    if (!damageExtension)
        return std::unexpected(damageExtension.error());
    const auto fixes = connection.requireXFixes();
    if (!fixes)
        return std::unexpected(fixes.error());
    X11Damage damage;
    damage.m_xcb = connection.xcb();
    damage.m_firstEvent = (*damageExtension)->first_event;
    xcb_discard_reply(damage.m_xcb, xcb_damage_query_version(damage.m_xcb, 1, 1).sequence);
    damage.m_region = xcb_generate_id(damage.m_xcb);
    xcb_xfixes_create_region(damage.m_xcb, damage.m_region, 0, nullptr);
    damage.m_damage = xcb_generate_id(damage.m_xcb);
    damage.m_events = events;
    xcb_damage_create(damage.m_xcb, damage.m_damage, window,
                      events == Events::first ? XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY
                                              : XCB_DAMAGE_REPORT_LEVEL_DELTA_RECTANGLES);
    return damage;
}

void X11Damage::end(bool isThere) {
    if (const auto asked = std::exchange(m_asked, std::nullopt))
        xcb_discard_reply(m_xcb, asked->sequence);
    if (isThere)
        xcb_damage_destroy(m_xcb, m_damage);
    xcb_xfixes_destroy_region(m_xcb, m_region);
    if (m_wanted != XCB_NONE)
        xcb_xfixes_destroy_region(m_xcb, m_wanted);
}

void X11Damage::leaveOut(const QRegion &part) {
    // Larger than any window.
    constexpr int side = std::numeric_limits<std::int16_t>::max();
    std::vector<xcb_rectangle_t> wanted;
    for (const QRect &rect : QRegion(0, 0, side, side) - part)
        wanted.push_back({std::int16_t(rect.x()), std::int16_t(rect.y()), std::uint16_t(rect.width()),
                          std::uint16_t(rect.height())});
    if (m_wanted == XCB_NONE) {
        m_wanted = xcb_generate_id(m_xcb);
        xcb_xfixes_create_region(m_xcb, m_wanted, std::uint32_t(wanted.size()), wanted.data());
    } else {
        xcb_xfixes_set_region(m_xcb, m_wanted, std::uint32_t(wanted.size()), wanted.data());
    }
}

bool X11Damage::handles(const xcb_generic_event_t &event, double now, double &hostTime) {
    if ((event.response_type & ~X11Connection::sentEventBit) != m_firstEvent + XCB_DAMAGE_NOTIFY)
        return false;
    const auto &notify = reinterpret_cast<const xcb_damage_notify_event_t &>(event);
    if (notify.damage != m_damage)
        return false;
    // What was drawn before the last question is in its answer.
    if (m_lastQuestion && std::int32_t(event.full_sequence - *m_lastQuestion) < 0)
        return false;
    m_isDamaged = true;
    m_place = {notify.area.x, notify.area.y, notify.area.width, notify.area.height};
    hostTime = X11Connection::hostTime(notify.timestamp, now);
    return true;
}

void X11Damage::ask() {
    if (!std::exchange(m_isDamaged, false))
        return;
    m_lastQuestion = xcb_damage_subtract(m_xcb, m_damage, m_wanted, m_region).sequence;
    m_asked = xcb_xfixes_fetch_region(m_xcb, m_region);
}

bool X11Damage::answer(const std::function<void(const PixelRect &)> &damaged) {
    const auto asked = std::exchange(m_asked, std::nullopt);
    if (!asked)
        return true;
    const auto region = xcbReply(m_xcb, *asked, xcb_xfixes_fetch_region_reply);
    if (!region)
        return false;
    const xcb_rectangle_t *rects = xcb_xfixes_fetch_region_rectangles(region.get());
    for (int i = 0; i < xcb_xfixes_fetch_region_rectangles_length(region.get()); ++i)
        damaged({rects[i].x, rects[i].y, rects[i].width, rects[i].height});
    return true;
}

} // namespace vantrell
