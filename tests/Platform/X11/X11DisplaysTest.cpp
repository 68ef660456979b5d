// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Displays.h"

#include "Platform/X11/X11Monitors.h"
#include "TestSupport/Desktop/X11Session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace vantrell::testing {

namespace {

TEST(X11Displays, haveTheNamesThatTheirMakersGaveThem) {
    const X11Session session;
    const auto connection = X11Connection::open();
    ASSERT_TRUE(connection);
    ASSERT_EQ((*listX11Displays(**connection)).front().name, "screen");

    std::array<std::uint8_t, 128> edid{0, 255, 255, 255, 255, 255, 255, 0};
    constexpr std::string_view descriptor("\0\0\0\xfc\0UltraWide 9\n  ", 18);
    std::ranges::copy(descriptor, edid.begin() + 72);
    const auto monitors = listX11Monitors(**connection);
    const auto tell = [&](std::uint32_t bytes) {
        xcb_randr_change_output_property((*connection)->xcb(), monitors.at(0).outputs.at(0),
                                         (*connection)->atom("EDID", true), XCB_ATOM_INTEGER, 8,
                                         XCB_PROP_MODE_REPLACE, bytes, edid.data());
        return listX11Displays(**connection)->front();
    };
    EXPECT_EQ(tell(128).name, "UltraWide 9");
    EXPECT_EQ(tell(128).id, "screen");
    EXPECT_EQ(tell(80).name, "screen"); // cut off
}

} // namespace
} // namespace vantrell::testing
