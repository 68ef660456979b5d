// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Displays.h"

#include "Platform/ScreenError.h"

#include <xcb/randr.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>

namespace vantrell {
namespace {

std::optional<double> number(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || value <= 0)
        return std::nullopt;
    return value;
}

std::string environment(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}

std::string property(const X11Connection &connection, xcb_window_t window, xcb_atom_t name) {
    constexpr std::uint32_t most = 1 << 16;
    const auto cookie = xcb_get_property(connection.xcb(), 0, window, name, XCB_ATOM_STRING, 0, most);
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection.xcb(), cookie, nullptr));
    if (!reply || reply->format != 8)
        return {};
    const auto *text = static_cast<const char *>(xcb_get_property_value(reply.get()));
    return {text, std::size_t(xcb_get_property_value_length(reply.get()))};
}

std::string atomName(const X11Connection &connection, xcb_atom_t atom) {
    const auto cookie = xcb_get_atom_name(connection.xcb(), atom);
    const XcbPointer<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection.xcb(), cookie, nullptr));
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()), std::size_t(xcb_get_atom_name_name_length(reply.get()))};
}

Display display(std::string name, const PixelRect &pixels, double scale, bool isPrimary) {
    // As toolkits place their screens: the corner keeps its pixel numbers, the size is scaled.
    const Rect frame{double(pixels.x), double(pixels.y), pixels.width / scale, pixels.height / scale};
    return Display{
        .id = name, .name = name, .frame = frame, .pixels = pixels, .scale = scale, .isPrimary = isPrimary};
}

} // namespace

X11ScaleRules X11ScaleRules::fromDesktop(const X11Connection &connection) {
    return {property(connection, connection.root(), XCB_ATOM_RESOURCE_MANAGER),
            environment("QT_SCALE_FACTOR"), environment("QT_SCREEN_SCALE_FACTORS")};
}

double X11ScaleRules::scaleOf(std::string_view name, std::size_t place) const {
    constexpr double dpiOfScaleOne = 96;
    constexpr std::string_view dpiKey = "Xft.dpi:";
    std::optional<double> own;
    std::size_t index = 0;
    for (std::string_view rest = screenScaleFactors; !rest.empty(); ++index) {
        const std::string_view item = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), item.size() + 1));
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos ? index == place : item.substr(0, equals) == name)
            own = number(item.substr(equals == std::string_view::npos ? 0 : equals + 1));
    }
    double scale = 1;
    const std::size_t dpi = resources.starts_with(dpiKey) ? 0 : resources.find("\n" + std::string(dpiKey));
    if (own)
        scale = *own;
    else if (dpi != std::string::npos)
        scale =
            number(std::string_view(resources).substr(resources.find(':', dpi) + 1)).value_or(dpiOfScaleOne) /
            dpiOfScaleOne;
    return std::max(1.0, scale * number(scaleFactor).value_or(1));
}

std::expected<std::vector<Display>, PlatformError> listX11Displays(const X11Connection &connection) {
    const X11ScaleRules rules = X11ScaleRules::fromDesktop(connection);
    std::vector<Display> displays;
    const xcb_query_extension_reply_t *randr = xcb_get_extension_data(connection.xcb(), &xcb_randr_id);
    if (randr && randr->present) {
        // Without this the server takes the client for an old one that knows no monitors.
        const auto version = xcb_randr_query_version(connection.xcb(), 1, 5);
        const XcbPointer<xcb_randr_query_version_reply_t> known(
            xcb_randr_query_version_reply(connection.xcb(), version, nullptr));
        const auto cookie = xcb_randr_get_monitors(connection.xcb(), connection.root(), 1);
        const XcbPointer<xcb_randr_get_monitors_reply_t> reply(
            xcb_randr_get_monitors_reply(connection.xcb(), cookie, nullptr));
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
                 xcb_randr_monitor_info_next(&it)) {
                const PixelRect pixels{it.data->x, it.data->y, it.data->width, it.data->height};
                const std::string name = atomName(connection, it.data->name);
                if (!pixels.isEmpty())
                    displays.push_back(
                        display(name, pixels, rules.scaleOf(name, displays.size()), it.data->primary != 0));
            }
        }
    }
    if (connection.isBroken())
        return std::unexpected(X11Connection::lostError());
    if (displays.empty()) {
        const PixelRect whole{0, 0, connection.screen().width_in_pixels,
                              connection.screen().height_in_pixels};
        displays.push_back(display("screen", whole, rules.scaleOf("screen", 0), true));
    }
    // The primary one comes first, the others keep the server's order.
    const auto primary = std::ranges::find(displays, true, &Display::isPrimary);
    if (primary != displays.end())
        std::rotate(displays.begin(), primary, primary + 1);
    displays.front().isPrimary = true;
    return displays;
}

} // namespace vantrell
