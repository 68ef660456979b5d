// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Displays.h"

#include "Platform/X11/X11Monitors.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <utility>

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
    const auto reply = xcbReply(connection.xcb(),
                                xcb_get_property(connection.xcb(), 0, window, name, XCB_ATOM_STRING, 0, most),
                                xcb_get_property_reply);
    if (!reply || reply->format != 8)
        return {};
    const auto *text = static_cast<const char *>(xcb_get_property_value(reply.get()));
    return {text, std::size_t(xcb_get_property_value_length(reply.get()))};
}

Display display(const std::string &id, std::optional<std::string> name, const PixelRect &pixels,
                double scale) {
    // As toolkits place their screens: the corner keeps its pixel numbers, the size is scaled.
    const Rect frame{double(pixels.x), double(pixels.y), pixels.width / scale, pixels.height / scale};
    return Display{
        .id = id, .name = std::move(name).value_or(id), .frame = frame, .pixels = pixels, .scale = scale};
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
    for (const X11Monitor &monitor : listX11Monitors(connection)) {
        displays.push_back(display(monitor.id, x11MonitorName(connection, monitor), monitor.pixels,
                                   rules.scaleOf(monitor.id, displays.size())));
        displays.back().isPrimary = monitor.isPrimary;
    }
    if (connection.isBroken())
        return std::unexpected(X11Connection::lostError());
    if (displays.empty()) {
        const PixelRect whole{0, 0, connection.screen().width_in_pixels,
                              connection.screen().height_in_pixels};
        displays.push_back(display("screen", {}, whole, rules.scaleOf("screen", 0)));
    }
    // The primary one comes first, the others keep the server's order.
    const auto primary = std::ranges::find(displays, true, &Display::isPrimary);
    if (primary != displays.end())
        std::rotate(displays.begin(), primary, primary + 1);
    displays.front().isPrimary = true;
    return displays;
}

} // namespace vantrell
