// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Application.h"
#include "App/LibraryVersions.h"
#include "App/PlatformLoader.h"
#include "App/SessionKind.h"
#include "Auth/KeyProvider.h"
#include "Capture/CaptureStorage.h"
#include "CommandLine/Arguments.h"
#include "CommandLine/Reporter.h"
#include "CommandLine/Run.h"
#include "CommandLine/UnixSignals.h"
#include "CommandLine/VersionText.h"
#include "Media/Libav/FFmpegLog.h"
#include "Panels/Languages.h"
#include "Panels/PanelShell.h"
#include "Support/CrashHandler.h"
#include "Support/Log.h"
#include "Support/SmallHeap.h"
#include "Support/SystemClock.h"
#include "Support/TaskScope.h"

#include <QApplication>

#include <csignal>

using namespace vantrell;

namespace {

bool hasDesktop() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

/// The application: lives until it is asked to end.
int runApplication(int argc, char **argv, std::optional<std::string> environmentKey) {
    if (!hasDesktop()) {
        std::fputs("There is no desktop to run on\nTry vantrell-capture --help\n", stderr);
        return int(ExitCode::failed);
    }
    static constexpr std::initializer_list<int> ends{SIGINT, SIGTERM, SIGHUP};
    UnixSignals::block(ends);
    // Left to itself Qt takes the X server that some Wayland sessions have beside their compositor, whose
    // windows are out of our panels' reach there.
    if (sessionKind() == SessionKind::wayland && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "wayland;xcb");
    PanelShell::prepare();
    QApplication qt(argc, argv);
    QApplication::setApplicationName("vantrell-capture");
    QApplication::setDesktopFileName("app.vantrell.Capture");
    installUsersLanguage();
    SystemClock clock;
    std::optional<int> ended;
    {
        Application application(std::move(environmentKey), clock);
        const UnixSignals signals(ends, [&](int) { application.terminate(); });
        // The session's end: what is being recorded is saved while the session waits.
        QObject::connect(&qt, &QGuiApplication::commitDataRequest, &qt,
                         [&](QSessionManager &) { application.terminate(); });
        TaskScope scope;
        scope.start(
            [](Application *running, std::optional<int> *end, std::stop_token stop) -> Task<> {
                *end = co_await running->run(stop);
                // Not quit(), which asks all windows to close: an alert that waits for its answer refuses.
                QCoreApplication::exit();
            },
            &application, &ended);
        if (!ended)
            QCoreApplication::exec();
    }
    return ended.value_or(int(ExitCode::failed));
}

} // namespace

int main(int argc, char **argv) {
    // First of all, while there is one thread: the key leaves the environment.
    std::optional<std::string> environmentKey = KeyProvider::takeFromEnvironment();
    keepHeapSmall();
    installLogging();
    installFFmpegLog();
    installCrashHandler(CaptureStorage::crashFolder(), programAndBuild());
    const auto arguments = parseArguments({argv + 1, argv + argc});
    if (!arguments) {
        const Reporter reporter(arguments.error().json);
        reporter.failure(arguments.error().sentence);
        reporter.note("Try vantrell-capture --help");
        return int(ExitCode::wrongUsage);
    }

    if (std::holds_alternative<ApplicationArguments>(arguments->command))
        return runApplication(argc, argv, std::move(environmentKey));
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("vantrell-capture");
    Reporter reporter(arguments->json);
    SystemClock clock;
    const CommandContext context{reporter, clock, std::move(environmentKey), loadPlatform, libraryVersions};
    // A command that never waits ends before the event loop runs.
    std::optional<ExitCode> ended;
    TaskScope scope;
    scope.start(
        [](Arguments given, CommandContext with, std::optional<ExitCode> *end,
           std::stop_token stop) -> Task<> {
            *end = co_await runCommand(std::move(given), std::move(with), stop);
            QCoreApplication::quit();
        },
        *arguments, context, &ended);
    if (!ended)
        QCoreApplication::exec();
    return int(ended.value_or(ExitCode::failed));
}
