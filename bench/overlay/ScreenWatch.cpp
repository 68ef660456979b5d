// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ScreenWatch.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

using namespace vantrell;

ScreenWatch::ScreenWatch() : m_connection(std::move(X11Connection::open().value())) {}

void ScreenWatch::paintDesktop(std::uint32_t rgb) {
    m_desktop = rgb;
    xcb_change_window_attributes(m_connection->xcb(), m_connection->root(), XCB_CW_BACK_PIXEL, &rgb);
    xcb_clear_area(m_connection->xcb(), 0, m_connection->root(), 0, 0, 0, 0);
    xcb_flush(m_connection->xcb());
}

bool ScreenWatch::isDesktop(const Point &pixel) const {
    const auto reply =
        xcbReply(m_connection->xcb(),
                 xcb_get_image(m_connection->xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection->root(),
                               std::int16_t(pixel.x), std::int16_t(pixel.y), 1, 1, ~0u),
                 xcb_get_image_reply);
    std::uint32_t value = 0;
    if (reply)
        std::memcpy(&value, xcb_get_image_data(reply.get()), sizeof value);
    return (value & 0xffffff) == m_desktop;
}

double ScreenWatch::waitUntil(const std::vector<Point> &pixels, bool areCovered) {
    constexpr double patience = 10;
    const double start = hostNow();
    while (!std::ranges::all_of(pixels, [&](const Point &pixel) { return isDesktop(pixel) != areCovered; })) {
        if (hostNow() - start > patience) {
            std::fputs("the overlay did not come or did not go\n", stderr);
            std::exit(1);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return hostNow();
}
