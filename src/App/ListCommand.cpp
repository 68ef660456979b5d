// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ListCommand.h"

#include "App/PlatformLoader.h"

#include <nlohmann/json.hpp>

#include <format>

namespace vantrell {

namespace {

nlohmann::json json(const PixelRect &rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

std::string text(const PixelRect &rect) {
    return std::format("{}x{} at {},{}", rect.width, rect.height, rect.x, rect.y);
}

void report(const Display &display, const Reporter &reporter) {
    reporter.result({{"id", display.id},
                     {"name", display.name},
                     {"pixels", json(display.pixels)},
                     {"scale", display.scale},
                     {"primary", display.isPrimary}},
                    std::format("{}  {}  scale {}{}", display.id, text(display.pixels), display.scale,
                                display.isPrimary ? "  primary" : ""));
}

void report(const WindowDescription &window, const Reporter &reporter) {
    nlohmann::json object{{"id", window.id}, {"pixels", json(window.pixels)}};
    if (window.applicationId)
        object["applicationId"] = *window.applicationId;
    if (window.applicationName)
        object["applicationName"] = *window.applicationName;
    if (window.title)
        object["title"] = *window.title;
    reporter.result(object, std::format("{}  {}  {}  {}", window.id, text(window.pixels),
                                        window.applicationName.value_or("?"), window.title.value_or("")));
}

template <typename T>
ExitCode reportAll(const std::expected<std::vector<T>, PlatformError> &things, const Reporter &reporter) {
    if (!things) {
        reporter.failure(things.error().description());
        return ExitCode::failed;
    }
    for (const T &thing : *things)
        report(thing, reporter);
    return ExitCode::success;
}

} // namespace

Task<ExitCode> runList(ListArguments arguments, CommandContext context, std::stop_token) {
    switch (arguments.what) {
    case ListArguments::What::displays:
        co_return reportAll(loadPlatform(context.clock).capture->displays(), context.reporter);
    case ListArguments::What::windows:
        co_return reportAll(loadPlatform(context.clock).capture->windows(), context.reporter);
    default:
        context.reporter.failure("This cannot be listed yet");
        co_return ExitCode::failed;
    }
}

} // namespace vantrell
