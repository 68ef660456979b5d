// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TargetProject.h"
#include "Auth/PairingClient.h"
#include "Session/CaptureSettings.h"
#include "Session/ServiceSession.h"
#include "Support/Clock.h"
#include "Support/Observers.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The user's account as the application knows it: the connection, the projects and the plan's limits. Main
/// thread.
class ServiceAccount {
public:
    /// All outlive the account.
    ServiceAccount(ServiceSession &session, CaptureSettings &settings, Clock &clock);
    ServiceAccount(const ServiceAccount &) = delete;
    ServiceAccount &operator=(const ServiceAccount &) = delete;

    /// Told of every change of what can be read here.
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

    PairingClient &pairing() { return m_pairing; }
    bool isPaired() const { return m_pairing.state().kind == PairingState::Kind::paired; }
    const PairingState &pairingState() const { return m_pairing.state(); }
    const std::vector<TargetProject> &projects() const { return m_projects; }
    /// The longest recording of the plan; 20 minutes until the plan is known.
    double recordingCapSeconds() const { return m_recordingCapSeconds; }
    std::optional<std::int64_t> maxVideoUploadBytes() const { return m_maxVideoUploadBytes; }
    bool limitsFetched() const { return m_limitsFetched; }

    /// Asks the service for the projects. A choice that is not among them is replaced by the first one, or
    /// with `autoSelect` false dropped. Does nothing unless connected; a failure changes nothing.
    void fetchProjectList(bool autoSelect);
    /// Asks for the plan's limits until they are there: ten times, ever more seldom.
    void refreshLimits();
    /// One attempt.
    Task<> fetchLimitsOnce(std::stop_token stop);
    /// A project was found deleted on the service.
    void handleProjectGone(const std::string &projectId);
    /// The user disconnects.
    void unpair();

private:
    void pairingChanged();
    Task<> fetchProjects(bool autoSelect, std::stop_token stop);
    Task<> fetchLimitsUntilThere(std::stop_token stop);

    ServiceSession &m_session;
    CaptureSettings &m_settings;
    Clock &m_clock;
    Observers m_observers;
    PairingClient m_pairing;
    PairingState m_lastState;
    std::vector<TargetProject> m_projects;
    std::optional<Clock::WallTime> m_projectsRefreshedAt;
    double m_recordingCapSeconds = 1200;
    std::optional<std::int64_t> m_maxVideoUploadBytes;
    bool m_limitsFetched = false;
    TaskScope m_limitsFetchTask;
    TaskScope m_projectsTask;
    TaskScope m_scope;
};

} // namespace vantrell
