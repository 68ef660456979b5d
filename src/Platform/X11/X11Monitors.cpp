// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Monitors.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace vantrell {

namespace {

std::string atomName(const X11Connection &connection, xcb_atom_t atom) {
    const auto reply =
        xcbReply(connection.xcb(), xcb_get_atom_name(connection.xcb(), atom), xcb_get_atom_name_reply);
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()), std::size_t(xcb_get_atom_name_name_length(reply.get()))};
}

/// The text of the descriptor that holds the product's name.
std::optional<std::string> productName(std::span<const std::uint8_t> edid) {
    constexpr std::size_t blockSize = 128;
    constexpr std::array<std::uint8_t, 8> header{0, 255, 255, 255, 255, 255, 255, 0};
    constexpr std::size_t descriptorSize = 18;
    constexpr std::array<std::size_t, 4> descriptors{54, 72, 90, 108};
    constexpr std::array<std::uint8_t, 5> nameFollows{0, 0, 0, 0xfc, 0};
    if (edid.size() < blockSize || !std::ranges::equal(edid.first(header.size()), header))
        return std::nullopt;
    for (const std::size_t place : descriptors) {
        const auto descriptor = edid.subspan(place, descriptorSize);
        if (!std::ranges::equal(descriptor.first(nameFollows.size()), nameFollows))
            continue;
        std::string text;
        for (const std::uint8_t character : descriptor.subspan(nameFollows.size())) {
            if (character < ' ' || character > '~')
                break;
            text += char(character);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text.empty() ? std::nullopt : std::optional(text);
    }
    return std::nullopt;
}

} // namespace

std::vector<X11Monitor> listX11Monitors(const X11Connection &connection) {
    xcb_connection_t *xcb = connection.xcb();
    const xcb_query_extension_reply_t *randr = xcb_get_extension_data(xcb, &xcb_randr_id);
    if (!randr || !randr->present)
        return {};
    // Without this the server takes the client for an old one that knows no monitors.
    xcb_discard_reply(xcb, xcb_randr_query_version(xcb, 1, 5).sequence);
    const auto reply =
        xcbReply(xcb, xcb_randr_get_monitors(xcb, connection.root(), 1), xcb_randr_get_monitors_reply);
    if (!reply)
        return {};
    std::vector<X11Monitor> monitors;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        const PixelRect pixels{it.data->x, it.data->y, it.data->width, it.data->height};
        if (pixels.isEmpty())
            continue;
        const xcb_randr_output_t *outputs = xcb_randr_monitor_info_outputs(it.data);
        monitors.push_back({atomName(connection, it.data->name),
                            pixels,
                            it.data->primary != 0,
                            {outputs, outputs + xcb_randr_monitor_info_outputs_length(it.data)}});
    }
    return monitors;
}

std::optional<std::string> x11MonitorName(const X11Connection &connection, const X11Monitor &monitor) {
    constexpr std::uint32_t most = 64; // in units of four bytes
    const xcb_atom_t edid = connection.atom("EDID");
    for (const xcb_randr_output_t output : monitor.outputs) {
        const auto reply = xcbReply(connection.xcb(),
                                    xcb_randr_get_output_property(connection.xcb(), output, edid,
                                                                  XCB_GET_PROPERTY_TYPE_ANY, 0, most, 0, 0),
                                    xcb_randr_get_output_property_reply);
        if (!reply || reply->format != 8)
            continue;
        const std::span bytes(xcb_randr_get_output_property_data(reply.get()),
                              std::size_t(xcb_randr_get_output_property_data_length(reply.get())));
        if (auto name = productName(bytes))
            return name;
    }
    return std::nullopt;
}

} // namespace vantrell
