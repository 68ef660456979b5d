// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandDisplays.h"

#include "Platform/ScreenError.h"
#include "Platform/Wayland/WaylandConnection.h"
#include "Platform/Wayland/XdgOutput.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vantrell {

namespace {

/// The version that tells an output's name.
constexpr std::uint32_t outputVersion = 4;
constexpr std::uint32_t xdgOutputVersion = 3;

struct Output {
    std::uint32_t global = 0;
    wl_output *output = nullptr;
    std::string name, description;
    PixelSize mode;
    bool isTurned = false;
    int wholeScale = 1;
    PixelRect logical;
    /// Its corner by the older protocol, which is all that some portals look at.
    int olderX = 0, olderY = 0;
};

/// What one connection is told. Its objects go with the connection.
class Listing {
public:
    std::expected<std::vector<Display>, PlatformError> run();

private:
    void found(wl_registry *registry, std::uint32_t global, std::string_view interface,
               std::uint32_t version);
    std::vector<Display> displays() const;

    WaylandConnection m_connection{
        [this](wl_registry *registry, std::uint32_t global, std::string_view interface,
               std::uint32_t version) { found(registry, global, interface, version); }};
    std::vector<std::unique_ptr<Output>> m_outputs;
    wl_proxy *m_manager = nullptr;
};

std::unexpected<PlatformError> unreachable() {
    return std::unexpected(
        screenError(ScreenErrorCode::connectionLost, "The Wayland compositor does not answer"));
}

const wl_output_listener wlOutputEvents{
    .geometry =
        [](void *data, wl_output *, std::int32_t x, std::int32_t y, std::int32_t, std::int32_t, std::int32_t,
           const char *, const char *, std::int32_t transform) {
            auto *output = static_cast<Output *>(data);
            output->logical.x = output->olderX = x;
            output->logical.y = output->olderY = y;
            output->isTurned = transform & 1;
        },
    .mode =
        [](void *data, wl_output *, std::uint32_t flags, std::int32_t width, std::int32_t height,
           std::int32_t) {
            if (flags & WL_OUTPUT_MODE_CURRENT)
                static_cast<Output *>(data)->mode = {width, height};
        },
    .done = [](void *, wl_output *) {},
    .scale = [](void *data, wl_output *,
                std::int32_t scale) { static_cast<Output *>(data)->wholeScale = scale; },
    .name = [](void *data, wl_output *, const char *name) { static_cast<Output *>(data)->name = name; },
    .description = [](void *data, wl_output *,
                      const char *text) { static_cast<Output *>(data)->description = text; },
};

const XdgOutputEvents xdgEvents{
    .logicalPosition =
        [](void *data, wl_proxy *, std::int32_t x, std::int32_t y) {
            auto *output = static_cast<Output *>(data);
            output->logical.x = x;
            output->logical.y = y;
        },
    .logicalSize =
        [](void *data, wl_proxy *, std::int32_t width, std::int32_t height) {
            auto *output = static_cast<Output *>(data);
            output->logical.width = width;
            output->logical.height = height;
        },
    .done = [](void *, wl_proxy *) {},
    .name =
        [](void *data, wl_proxy *, const char *name) {
            if (auto *output = static_cast<Output *>(data); output->name.empty())
                output->name = name;
        },
    .description = [](void *, wl_proxy *, const char *) {},
};

void Listing::found(wl_registry *registry, std::uint32_t global, std::string_view interface,
                    std::uint32_t version) {
    if (interface == wl_output_interface.name) {
        auto output = std::make_unique<Output>();
        output->global = global;
        output->output = static_cast<wl_output *>(
            wl_registry_bind(registry, global, &wl_output_interface, std::min(version, outputVersion)));
        wl_output_add_listener(output->output, &wlOutputEvents, output.get());
        m_outputs.push_back(std::move(output));
    } else if (interface == xdgOutputManagerInterface.name) {
        m_manager = static_cast<wl_proxy *>(wl_registry_bind(registry, global, &xdgOutputManagerInterface,
                                                             std::min(version, xdgOutputVersion)));
    }
}

std::expected<std::vector<Display>, PlatformError> Listing::run() {
    bool isWell = m_connection.roundTrip();
    std::vector<wl_proxy *> told;
    if (isWell && m_manager) {
        for (const auto &output : m_outputs)
            if (wl_proxy *made = xdgOutputOf(m_manager, output->output, xdgEvents, output.get()))
                told.push_back(made);
    }
    isWell = isWell && m_connection.roundTrip();
    std::ranges::for_each(told, wl_proxy_destroy);
    if (m_manager)
        wl_proxy_destroy(m_manager);
    for (const auto &output : m_outputs)
        wl_output_destroy(output->output);
    if (!isWell)
        return unreachable();
    auto listed = displays();
    if (listed.empty())
        return std::unexpected(screenError(ScreenErrorCode::noSuchDisplay, "There is no display"));
    return listed;
}

std::vector<Display> Listing::displays() const {
    std::vector<Display> displays;
    double largestScale = 1;
    const bool arePlacesShared = std::ranges::all_of(m_outputs, [](const auto &output) {
        return output->olderX == output->logical.x && output->olderY == output->logical.y;
    });
    for (const auto &output : m_outputs) {
        if (output->mode.isEmpty())
            continue;
        PixelSize size = output->mode;
        if (output->isTurned)
            std::swap(size.width, size.height);
        PixelRect logical = output->logical;
        if (logical.isEmpty()) {
            logical.width = size.width / output->wholeScale;
            logical.height = size.height / output->wholeScale;
        }
        Display display;
        display.id = output->name.empty() ? "output-" + std::to_string(output->global) : output->name;
        const bool isDescribed = output->description.find_first_not_of(' ') != std::string::npos;
        display.name = isDescribed ? output->description : display.id;
        display.frame = toPoints(logical, 1);
        display.pixels = {0, 0, size.width, size.height};
        display.scale = logical.width > 0 ? double(size.width) / logical.width : 1;
        display.isPlaceShared = arePlacesShared;
        largestScale = std::max(largestScale, display.scale);
        displays.push_back(std::move(display));
    }
    for (Display &display : displays) {
        display.pixels.x = int(std::lround(display.frame.x * largestScale));
        display.pixels.y = int(std::lround(display.frame.y * largestScale));
    }
    // No compositor says which one is the first: the one in the corner is.
    const auto corner = std::ranges::min_element(displays, {}, [](const Display &display) {
        return std::pair(std::abs(display.frame.x) + std::abs(display.frame.y), display.id);
    });
    if (corner != displays.end()) {
        std::rotate(displays.begin(), corner, corner + 1);
        displays.front().isPrimary = true;
    }
    return displays;
}

} // namespace

std::expected<std::vector<Display>, PlatformError> listWaylandDisplays() {
    return Listing().run();
}

} // namespace vantrell
