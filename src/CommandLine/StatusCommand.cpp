// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/StatusCommand.h"

#include "Analytics/Analytics.h"
#include "Capture/CaptureStorage.h"
#include "CommandLine/OpenSession.h"
#include "CommandLine/RunningApplication.h"
#include "Support/BlockingWork.h"
#include "Support/Settings.h"
#include "Support/TaskScope.h"
#include "Upload/UploadJournal.h"

#include <QDBusArgument>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto servicePatience = 5s;

/// What the service told, within the time.
struct Answers {
    std::expected<CaptureLimits, APIError> limits = std::unexpected(APIError(APIError::NotPaired{}));
    std::expected<std::vector<TargetProject>, APIError> projects =
        std::unexpected(APIError(APIError::NotPaired{}));
};

Task<Answers> askService(ServiceSession *session, CommandContext context, std::stop_token stop) {
    std::stop_source given;
    const std::stop_callback outer(stop, [given]() mutable { given.request_stop(); });
    TaskScope timer;
    timer.start(
        [](Clock *clock, std::stop_source limit, std::stop_token ended) -> Task<> {
            if (co_await clock->sleep(servicePatience, ended))
                limit.request_stop();
        },
        &context.clock, given);
    Answers answers;
    answers.limits = co_await session->limits(given.get_token());
    if (answers.limits)
        answers.projects = co_await session->listProjects(given.get_token());
    co_return answers;
}

/// The lines of the report, for a person and for a script.
class Report {
public:
    void add(const nlohmann::json &fields, const std::string &line) {
        m_json.update(fields);
        m_text << (m_text.tellp() > 0 ? "\n" : "") << line;
    }
    void print(const Reporter &reporter) const { reporter.result(m_json, m_text.str()); }

private:
    nlohmann::json m_json = nlohmann::json::object();
    std::ostringstream m_text;
};

/// Why there is no connection, or nothing.
std::optional<std::string> whyNotConnected(bool hasKey, ServiceSession &session, const Answers &answers) {
    if (!hasKey) {
        const auto &problem = session.keychain().problem();
        return problem ? problem->description() : APIError(APIError::NotPaired{}).description();
    }
    if (!answers.limits && answers.limits.error().as<APIError::NotPaired>())
        return "The service does not accept the key any more; connect again";
    return std::nullopt;
}

void reportProject(Report &report, const Answers &answers) {
    const auto chosen = Settings(Settings::defaultFile()).string("selectedProjectId");
    if (!chosen) {
        report.add(nlohmann::json::object(), "Project: none chosen");
        return;
    }
    nlohmann::json project{{"id", *chosen}};
    std::string name = *chosen;
    if (answers.projects) {
        const auto found = std::ranges::find(*answers.projects, *chosen, &TargetProject::id);
        if (found != answers.projects->end())
            project["name"] = name = found->name;
        else
            name += " (not in the account any more)";
    }
    report.add({{"project", project}}, "Project: " + name);
}

void reportLimits(Report &report, const CaptureLimits &limits) {
    std::ostringstream line;
    line << "Plan: " << limits.plan << ", recordings up to " << limits.maxVideoDurationMs / 60'000 << " min";
    nlohmann::json fields{{"plan", limits.plan}, {"maxVideoDurationMs", limits.maxVideoDurationMs}};
    if (limits.maxVideoUploadBytes) {
        fields["maxVideoUploadBytes"] = *limits.maxVideoUploadBytes;
        line << ", uploads up to " << *limits.maxVideoUploadBytes / 1'000'000 << " MB";
    }
    report.add({{"limits", fields}}, line.str());
}

void reportApplication(Report &report, const RunningApplication::Answer &answer) {
    if (!answer)
        return;
    const QVariantMap status = qdbus_cast<QVariantMap>(answer->value(0).value<QDBusArgument>());
    const auto text = [&status](const char *key) {
        return status.value(QString::fromLatin1(key)).toString().toStdString();
    };
    report.add({{"running", true}, {"state", text("state")}}, "The application runs: " + text("state"));
    const std::string tray = text("tray");
    report.add({{"tray", tray}}, tray.empty() ? "No tray was found" : "Tray: " + tray);
    if (const std::string hint = text("hotKeysHint"); !hint.empty())
        report.add({{"hotKeysHint", hint}}, hint);
    std::vector<std::string> keys;
    for (const QString &key : status.value(QStringLiteral("failedHotKeys")).toStringList())
        keys.push_back(key.toStdString());
    if (!keys.empty())
        report.add({{"failedHotKeys", keys}}, "Another program holds the keys of: " + keys.front() +
                                                  (keys.size() > 1 ? " and others" : ""));
}

void reportWaiting(Report &report, const std::vector<UploadJournalEntry> &journal) {
    const auto parked =
        std::ranges::count(journal, UploadJournalEntry::Phase::failed, &UploadJournalEntry::phase);
    report.add({{"waitingUploads", journal.size()}, {"parkedUploads", parked}},
               "Waiting uploads: " + std::to_string(journal.size()) +
                   (parked > 0 ? ", " + std::to_string(parked) + " of them until you retry" : ""));
    const Analytics &events = Analytics::shared();
    report.add({{"waitingEvents", events.count()}, {"tracking", !events.isOff()}},
               events.isOff() ? "Usage events: off"
                              : "Waiting usage events: " + std::to_string(events.count()));
}

} // namespace

Task<ExitCode> runStatus(StatusArguments, CommandContext context, std::stop_token stop) {
    auto session = openSession(context);
    if (!session) {
        context.reporter.failure(session.error());
        co_return ExitCode::failed;
    }
    const bool hasKey = co_await (*session)->connect(stop, Keychain::Asking::never);
    Answers answers;
    if (hasKey)
        answers = co_await askService(session->get(), context, stop);
    const auto journal =
        co_await runBlocking([] { return UploadJournal::read(CaptureStorage::journalURL()); }, stop);
    if (!journal)
        co_return ExitCode::failed;

    Report report;
    const std::string &service = (*session)->url().text();
    const auto reason = whyNotConnected(hasKey, **session, answers);
    if (reason) {
        report.add({{"connected", false}, {"service", service}, {"reason", *reason}},
                   "Not connected: " + *reason);
        if (const auto &problem = (*session)->keychain().problem(); problem && !hasKey)
            report.add({{"keyring", problem->name()}}, "Keyring: " + problem->name());
    } else {
        report.add({{"connected", true}, {"service", service}},
                   "Connected to " + service +
                       ((*session)->keys().isOverridden() ? " with the key of VANTRELL_API_KEY" : ""));
        if (!answers.limits)
            report.add({{"problem", answers.limits.error().description()}},
                       "The service cannot be asked: " + answers.limits.error().description());
    }
    reportProject(report, answers);
    if (answers.limits)
        reportLimits(report, *answers.limits);
    reportWaiting(report, *journal);
    if (RunningApplication::isThere())
        reportApplication(report, co_await RunningApplication::call("Status", {}, stop));
    else
        report.add({{"running", false}}, "The application does not run");
    report.print(context.reporter);
    co_return reason ? ExitCode::notConnected : ExitCode::success;
}

} // namespace vantrell
