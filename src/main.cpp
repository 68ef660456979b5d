// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PlatformLoader.h"
#include "Auth/KeyProvider.h"
#include "CommandLine/Arguments.h"
#include "CommandLine/Run.h"
#include "Media/Libav/FFmpegLog.h"
#include "Support/Log.h"
#include "Support/SystemClock.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>

using namespace vantrell;

int main(int argc, char **argv) {
    // First of all, while there is one thread: the key leaves the environment.
    std::optional<std::string> environmentKey = KeyProvider::takeFromEnvironment();
    installLogging();
    installFFmpegLog();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("vantrell-capture");

    const auto arguments = parseArguments({argv + 1, argv + argc});
    if (!arguments) {
        const std::string sentence = arguments.error().sentence + "\nTry vantrell-capture --help";
        std::fprintf(stderr, "%s\n", sentence.c_str());
        return int(ExitCode::wrongUsage);
    }

    Reporter reporter(arguments->json);
    SystemClock clock;
    const CommandContext context{reporter, clock, std::move(environmentKey), loadPlatform};
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
