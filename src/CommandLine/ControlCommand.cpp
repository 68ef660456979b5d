// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ControlCommand.h"

#include "Auth/KeyProvider.h"
#include "CommandLine/RunningApplication.h"
#include "Session/ApplicationBus.h"
#include "Support/DetachedProgram.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <nlohmann/json.hpp>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

using What = ControlArguments::What;

constexpr auto startPoll = 100ms;
constexpr int startPolls = 100;

/// Starts it and waits until it can be called. It has the key that this command was given, as if its user had
/// started it.
Task<bool> startApplication(Clock *clock, std::optional<std::string> key, std::stop_token stop) {
    std::map<std::string, std::string> variables;
    if (key)
        variables.emplace(KeyProvider::variable, *key);
    if (!startDetached(QCoreApplication::applicationFilePath().toStdString(), {}, variables))
        co_return false;
    for (int poll = 0; poll < startPolls; ++poll) {
        if (RunningApplication::isThere())
            co_return true;
        if (!co_await clock->sleep(startPoll, stop))
            co_return false;
    }
    co_return false;
}

struct Call {
    const char *method;
    const char *tool;
};

Call callOf(What what) {
    switch (what) {
    case What::area:
        return {"ShowTool", "area"};
    case What::window:
        return {"ShowTool", "window"};
    case What::screen:
        return {"ShowTool", "screen"};
    case What::toggle:
        return {"Toggle", nullptr};
    case What::pause:
        return {"Pause", nullptr};
    case What::stop:
        return {"Stop", nullptr};
    case What::quit:
        return {"Quit", nullptr};
    case What::open:
        return {"Open", nullptr};
    }
    return {"", nullptr};
}

/// As addresses, which the running application understands wherever it was started.
QStringList addressesOf(const std::vector<std::string> &files) {
    QStringList addresses;
    for (const std::string &file : files) {
        const QByteArray bytes = QByteArray::fromStdString(file);
        addresses.append(bytes.startsWith("file://")
                             ? QString::fromLatin1(bytes)
                             : QString::fromLatin1(
                                   QUrl::fromLocalFile(QFileInfo(QFile::decodeName(bytes)).absoluteFilePath())
                                       .toEncoded()));
    }
    return addresses;
}

/// Has to run for it.
bool startsApplication(What what) {
    return what == What::area || what == What::window || what == What::screen || what == What::open;
}

} // namespace

Task<ExitCode> runControl(ControlArguments arguments, CommandContext context, std::stop_token stop) {
    const Call call = callOf(arguments.what);
    if (startsApplication(arguments.what) && !RunningApplication::isThere() &&
        !co_await startApplication(&context.clock, context.environmentKey, stop)) {
        context.reporter.failure("Vantrell Capture could not be started");
        co_return ExitCode::failed;
    }
    QVariantList parameters;
    if (call.tool)
        parameters.append(QString::fromLatin1(call.tool));
    if (arguments.what == What::open)
        parameters = {addressesOf(arguments.files), QVariantMap()};
    const auto answer = co_await RunningApplication::call(
        call.method, parameters, stop,
        arguments.what == What::open ? applicationBus::standardInterface : applicationBus::interface);
    if (!answer) {
        context.reporter.failure(answer.error().sentence);
        co_return ExitCode::failed;
    }
    co_return ExitCode::success;
}

} // namespace vantrell
