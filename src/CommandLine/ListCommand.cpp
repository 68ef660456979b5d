// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ListCommand.h"

#include "CommandLine/OpenSession.h"
#include "Platform/CameraError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace vantrell {

namespace {

nlohmann::json json(const PixelRect &rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

std::string text(const PixelRect &rect) {
    std::ostringstream out;
    out << rect.width << "x" << rect.height << " at " << rect.x << "," << rect.y;
    return out.str();
}

/// One thing, one line, which scripts and completions read: names that others gave may have several.
void tell(const Reporter &reporter, const nlohmann::json &object, std::string line) {
    std::ranges::replace(line, '\n', ' ');
    reporter.result(object, line);
}

void report(const Display &display, const Reporter &reporter) {
    std::ostringstream line;
    line << display.id << "  " << text(display.pixels) << "  scale " << display.scale
         << (display.isPrimary ? "  primary" : "");
    if (display.name != display.id)
        line << "  " << display.name;
    tell(reporter,
         {{"id", display.id},
          {"name", display.name},
          {"pixels", json(display.pixels)},
          {"scale", display.scale},
          {"primary", display.isPrimary}},
         line.str());
}

void report(const WindowDescription &window, const Reporter &reporter) {
    nlohmann::json object{{"id", window.id}, {"pixels", json(window.pixels)}};
    if (window.applicationId)
        object["applicationId"] = *window.applicationId;
    if (window.applicationName)
        object["applicationName"] = *window.applicationName;
    if (window.title)
        object["title"] = *window.title;
    std::ostringstream line;
    line << window.id << "  " << text(window.pixels) << "  " << window.applicationName.value_or("?") << "  "
         << window.title.value_or("");
    tell(reporter, object, line.str());
}

void report(const Microphone &microphone, const Reporter &reporter) {
    tell(reporter, {{"id", microphone.id}, {"name", microphone.name}, {"default", microphone.isDefault}},
         microphone.id + "  " + microphone.name + (microphone.isDefault ? "  default" : ""));
}

void report(const Camera &camera, const Reporter &reporter) {
    tell(reporter, {{"id", camera.id}, {"name", camera.name}, {"default", camera.isDefault}},
         camera.id + "  " + camera.name + (camera.isDefault ? "  default" : ""));
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

Task<ExitCode> listCameras(CommandContext context, std::stop_token stop) {
    const Platform platform = context.loadPlatform(context.clock);
    // A desktop that asks its user names its cameras to nobody before.
    if (!co_await platform.cameras->requestAccess(stop)) {
        context.reporter.failure(cameraError(CameraErrorCode::accessRefused).description());
        co_return ExitCode::failed;
    }
    co_return reportAll(co_await platform.cameras->cameras(stop), context.reporter);
}

Task<ExitCode> listProjects(CommandContext context, std::stop_token stop) {
    auto session = openSession(context);
    if (!session) {
        context.reporter.failure(session.error());
        co_return ExitCode::failed;
    }
    co_await (*session)->connect(stop);
    const auto projects = co_await (*session)->listProjects(stop);
    if (!projects) {
        context.reporter.failure(projects.error().description());
        co_return projects.error().as<APIError::NotPaired>() ? ExitCode::notConnected : ExitCode::failed;
    }
    for (const TargetProject &project : *projects)
        tell(context.reporter, project.toJson(), project.id + "  " + project.name);
    co_return ExitCode::success;
}

} // namespace

Task<ExitCode> runList(ListArguments arguments, CommandContext context, std::stop_token stop) {
    switch (arguments.what) {
    case ListArguments::What::displays:
        co_return reportAll(context.loadPlatform(context.clock).capture->displays(), context.reporter);
    case ListArguments::What::windows:
        co_return reportAll(context.loadPlatform(context.clock).capture->windows(), context.reporter);
    case ListArguments::What::projects:
        co_return co_await listProjects(context, stop);
    case ListArguments::What::microphones:
        co_return reportAll(co_await context.loadPlatform(context.clock).audio->microphones(stop),
                            context.reporter);
    case ListArguments::What::cameras:
        co_return co_await listCameras(context, stop);
    }
    co_return ExitCode::failed;
}

} // namespace vantrell
