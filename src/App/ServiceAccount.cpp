// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ServiceAccount.h"

#include "Analytics/Analytics.h"
#include "Support/Log.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr int limitsAttempts = 10;
constexpr std::chrono::milliseconds firstLimitsDelay = 1s;
constexpr std::chrono::milliseconds longestLimitsDelay = 60s;

} // namespace

ServiceAccount::ServiceAccount(ServiceSession &session, CaptureSettings &settings, Clock &clock)
    : m_session(session), m_settings(settings), m_clock(clock),
      m_pairing({session.http(), clock, session.keychain(), session.keys(), Analytics::shared()},
                session.url()),
      m_lastState(m_pairing.state()) {
    m_pairing.onChange = [this] { pairingChanged(); };
    m_session.onKeyRejected = [this] {
        m_scope.start(
            [](ServiceAccount *account, std::stop_token stop) -> Task<> {
                // Not at once: whoever was refused is still in the middle of it.
                if (co_await account->m_clock.sleep(0ms, stop))
                    account->m_pairing.keyRejected();
            },
            this);
    };
}

void ServiceAccount::pairingChanged() {
    const bool wasPaired = m_lastState.kind == PairingState::Kind::paired;
    m_lastState = m_pairing.state();
    if (wasPaired && !isPaired()) {
        // Another account may come next, with another plan.
        m_projects.clear();
        m_limitsFetched = false;
    }
    m_observers.notify();
    fetchProjectList(true);
    refreshLimits();
}

void ServiceAccount::fetchProjectList(bool autoSelect) {
    if (!isPaired())
        return;
    m_projectsRefreshedAt = m_clock.wallNow();
    m_projectsTask.cancel();
    m_projectsTask.start(this, &ServiceAccount::fetchProjects, autoSelect);
}

Task<> ServiceAccount::fetchProjects(bool autoSelect, std::stop_token stop) {
    auto projects = co_await m_session.listProjects(stop);
    if (stop.stop_requested())
        co_return;
    if (!projects) {
        m_projectsRefreshedAt.reset();
        qCCritical(logApp, "project fetch failed: %s", projects.error().description().c_str());
        co_return;
    }
    m_projects = std::move(*projects);
    const auto chosen = m_settings.selectedProjectId();
    if (!chosen || std::ranges::find(m_projects, *chosen, &TargetProject::id) == m_projects.end()) {
        std::optional<std::string> instead;
        if (autoSelect && !m_projects.empty())
            instead = m_projects.front().id;
        m_settings.setSelectedProjectId(instead);
    }
    m_observers.notify();
}

void ServiceAccount::refreshLimits() {
    m_limitsFetchTask.cancel();
    if (isPaired())
        m_limitsFetchTask.start(this, &ServiceAccount::fetchLimitsUntilThere);
}

Task<> ServiceAccount::fetchLimitsUntilThere(std::stop_token stop) {
    auto delay = firstLimitsDelay;
    for (int attempt = 1; !m_limitsFetched && !stop.stop_requested(); ++attempt) {
        co_await fetchLimitsOnce(stop);
        if (m_limitsFetched || attempt >= limitsAttempts || !co_await m_clock.sleep(delay, stop))
            co_return;
        delay = std::min(delay * 2, longestLimitsDelay);
    }
}

Task<> ServiceAccount::fetchLimitsOnce(std::stop_token stop) {
    const auto limits = co_await m_session.limits(stop);
    if (!limits || stop.stop_requested())
        co_return;
    m_recordingCapSeconds = double(limits->maxVideoDurationMs) / 1000.0;
    m_maxVideoUploadBytes = limits->maxVideoUploadBytes;
    m_limitsFetched = true;
    m_observers.notify();
}

void ServiceAccount::handleProjectGone(const std::string &projectId) {
    if (m_settings.selectedProjectId() == projectId) {
        m_settings.setSelectedProjectId(std::nullopt);
        m_observers.notify();
    }
    fetchProjectList(false);
}

void ServiceAccount::unpair() {
    m_projects.clear();
    m_scope.start(
        [](ServiceAccount *account, std::stop_token stop) -> Task<> {
            const auto removed = co_await account->m_pairing.unpair(stop);
            if (!removed && !stop.stop_requested())
                qCCritical(logAuth, "key not removed: %s", removed.error().description().c_str());
        },
        this);
}

} // namespace vantrell
