// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/DoctorCommand.h"

#include "CommandLine/Doctor/Checks.h"
#include "CommandLine/Doctor/Probe.h"
#include "Support/TaskScope.h"

#include <QDBusConnection>

#include <nlohmann/json.hpp>

#include <array>
#include <cstdlib>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto lookPatience = 3s;
constexpr auto checkPatience = 6s;

/// In the order of the report.
constexpr std::array<Check, 14> checks{
    checkSystem, checkSession, checkScreen,   checkPortals, checkTray,    checkNotifications, checkKeyring,
    checkSound,  checkCameras, checkEncoders, checkDisk,    checkService, checkApplication,   checkOthers};

/// A stop that comes by itself after a time, or with the outer one.
class Deadline {
public:
    Deadline(Clock &clock, std::chrono::milliseconds patience, std::stop_token outer)
        : m_outer(std::move(outer), [source = m_source]() mutable { source.request_stop(); }) {
        m_timer.start(
            [](Clock *time, std::chrono::milliseconds limit, std::stop_source source,
               std::stop_token ended) -> Task<> {
                if (co_await time->sleep(limit, ended))
                    source.request_stop();
            },
            &clock, patience, m_source);
    }
    std::stop_token token() const { return m_source.get_token(); }

private:
    std::stop_source m_source;
    std::stop_callback<std::function<void()>> m_outer;
    TaskScope m_timer;
};

/// What the checks need to know before they may touch anything that could hang.
Task<> lookAround(Surroundings *around, std::stop_token stop) {
    around->isWayland =
        qgetenv("XDG_SESSION_TYPE") == "wayland" && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    TaskScope scope;
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        scope.start(
            [](Surroundings *found, std::stop_token limit, std::stop_token) -> Task<> {
                if (const auto server = co_await Probe::run(askDisplayServer, limit))
                    found->display = *server;
                else
                    found->displayHangs = true;
            },
            around, stop);
    scope.start(
        [](Surroundings *found, std::stop_token limit, std::stop_token) -> Task<> {
            const auto connected =
                co_await Probe::run([] { return QDBusConnection::sessionBus().isConnected(); }, limit);
            found->hasBus = connected && *connected;
        },
        around, stop);
    co_await scope.join({});
}

Task<std::vector<Findings>> runChecks(const Surroundings *around, std::stop_token stop) {
    std::vector<Findings> results(checks.size());
    TaskScope scope;
    for (std::size_t i = 0; i < checks.size(); ++i)
        scope.start([](Check check, const Surroundings *with, Findings *found, std::stop_token limit,
                       std::stop_token) -> Task<> { *found = co_await check(*with, limit); },
                    checks[i], around, &results[i], stop);
    co_await scope.join({});
    co_return results;
}

std::string lineOf(const Finding &finding) {
    const std::string mark = finding.state == Finding::State::ok       ? "[ok]  "
                             : finding.state == Finding::State::advice ? "[--]  "
                                                                       : "[!!]  ";
    std::string topic = finding.topic + ':';
    topic.resize(std::max<std::size_t>(topic.size(), 15), ' ');
    const std::string line = mark + topic + ' ' + finding.text;
    return finding.advice.empty() ? line : line + ". " + finding.advice;
}

ExitCode report(const std::vector<Findings> &results, const Reporter &reporter) {
    nlohmann::json list = nlohmann::json::array();
    std::string text;
    int problems = 0;
    for (const Findings &findings : results)
        for (const Finding &finding : findings) {
            nlohmann::json object{
                {"topic", finding.topic}, {"state", spelling(finding.state)}, {"text", finding.text}};
            if (!finding.advice.empty())
                object["advice"] = finding.advice;
            list.push_back(std::move(object));
            text += (text.empty() ? "" : "\n") + lineOf(finding);
            problems += finding.state == Finding::State::problem;
        }
    reporter.result({{"checks", list}, {"problems", problems}}, text);
    return problems > 0 ? ExitCode::failed : ExitCode::success;
}

} // namespace

Task<ExitCode> runDoctor(CommandContext context, std::stop_token stop) {
    Surroundings around{.clock = context.clock, .environmentKey = context.environmentKey};
    {
        const Deadline deadline(context.clock, lookPatience, stop);
        co_await lookAround(&around, deadline.token());
    }
    std::optional<Platform> platform;
    if (!around.displayHangs) {
        platform.emplace(context.loadPlatform(context.clock));
        around.platform = &*platform;
    }
    std::vector<Findings> results;
    {
        const Deadline deadline(context.clock, checkPatience, stop);
        results = co_await runChecks(&around, deadline.token());
    }
    const ExitCode code = report(results, context.reporter);
    if (Probe::left() > 0) {
        // The end of the process would wait for what hangs.
        std::fflush(nullptr);
        std::_Exit(int(code));
    }
    co_return code;
}

} // namespace vantrell
