// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Cursor.h"

#include <xcb/xinput.h>

#include <algorithm>

namespace vantrell {

std::expected<X11Cursor, PlatformError> X11Cursor::create(const X11Connection &connection) {
    X11Cursor cursor;
    const auto fixes = connection.requireXFixes();
    if (!fixes)
        return std::unexpected(fixes.error());
    cursor.m_firstFixesEvent = (*fixes)->first_event;
    xcb_xfixes_select_cursor_input(connection.xcb(), connection.root(),
                                   XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);

    const auto input = connection.require(&xcb_input_id, "XInputExtension");
    if (!input)
        return std::unexpected(input.error());
    cursor.m_inputOpcode = (*input)->major_opcode;
    xcb_discard_reply(connection.xcb(), xcb_input_xi_query_version(connection.xcb(), 2, 2).sequence);
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_MOTION};
    xcb_input_xi_select_events(connection.xcb(), connection.root(), 1, &selection.head);
    return cursor;
}

bool X11Cursor::handles(const xcb_generic_event_t &event, double now, double &hostTime) {
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    if (type == m_firstFixesEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        m_shapeStale = true;
        hostTime = X11Connection::hostTime(
            reinterpret_cast<const xcb_xfixes_cursor_notify_event_t &>(event).timestamp, now);
        return true;
    }
    if (type == XCB_GE_GENERIC) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
        if (generic.extension == m_inputOpcode && generic.event_type == XCB_INPUT_RAW_MOTION) {
            hostTime = X11Connection::hostTime(
                reinterpret_cast<const xcb_input_raw_motion_event_t &>(event).time, now);
            return true;
        }
    }
    return false;
}

void X11Cursor::beginUpdate(const X11Connection &connection) {
    m_placeCookie = xcb_query_pointer(connection.xcb(), connection.root());
    if (m_shapeStale)
        m_shapeCookie = xcb_xfixes_get_cursor_image(connection.xcb());
}

bool X11Cursor::finishUpdate(const X11Connection &connection) {
    bool changed = false;
    PixelRect next = m_picture.rect;
    const auto place = xcbReply(connection.xcb(), m_placeCookie, xcb_query_pointer_reply);
    if (m_shapeStale) {
        m_shapeStale = false;
        const auto image = xcbReply(connection.xcb(), m_shapeCookie, xcb_xfixes_get_cursor_image_reply);
        if (image) {
            const std::uint32_t *pixels = xcb_xfixes_get_cursor_image_cursor_image(image.get());
            m_picture.shape.assign(pixels, pixels + std::size_t(image->width) * image->height);
            m_hotSpot = {double(image->xhot), double(image->yhot)};
            next.width = image->width;
            next.height = image->height;
            changed = true;
        }
    }
    if (place) {
        next.x = place->root_x - int(m_hotSpot.x);
        next.y = place->root_y - int(m_hotSpot.y);
    }
    changed |= next != m_picture.rect;
    m_picture.rect = next;
    return changed;
}

} // namespace vantrell
