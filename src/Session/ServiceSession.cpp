// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/ServiceSession.h"

#include "Support/Settings.h"

#include <algorithm>

namespace vantrell {

std::expected<std::unique_ptr<ServiceSession>, std::string>
ServiceSession::create(std::optional<std::string> environmentKey) {
    auto url = ServiceURL::fromEnvironment();
    if (!url)
        return std::unexpected(description(url.error()));
    return std::unique_ptr<ServiceSession>(new ServiceSession(std::move(*url), std::move(environmentKey)));
}

ServiceSession::ServiceSession(ServiceURL url, std::optional<std::string> environmentKey)
    : m_url(std::move(url)), m_keyProvider(m_keychain, std::move(environmentKey)),
      m_api(
          m_http, m_url, [this] { return m_keyProvider.key(); },
          [this] {
              if (onKeyRejected)
                  onKeyRejected();
              else
                  m_keyProvider.dropOverriding();
          }) {}

Task<bool> ServiceSession::connect(std::stop_token stop, Keychain::Asking asking) {
    m_asking = asking;
    if (m_keyProvider.key())
        co_return true;
    const auto stored = co_await m_keychain.read(Keychain::apiKeyAccount, asking, stop);
    co_return stored.has_value() && stored->has_value();
}

template <typename T>
VantrellAPI::Result<T> ServiceSession::ask(VantrellAPI::Result<T> (VantrellAPI::*operation)(std::stop_token)
                                               const,
                                           std::stop_token stop) {
    const bool isOverridden = m_keyProvider.isOverridden();
    auto answer = co_await (m_api.*operation)(stop);
    const bool isRefused = !answer && answer.error().template as<APIError::NotPaired>();
    if (isRefused && isOverridden && co_await connect(stop, m_asking))
        answer = co_await (m_api.*operation)(stop);
    co_return answer;
}

VantrellAPI::Result<CaptureLimits> ServiceSession::limits(std::stop_token stop) {
    return ask(&VantrellAPI::limits, stop);
}

VantrellAPI::Result<std::vector<TargetProject>> ServiceSession::listProjects(std::stop_token stop) {
    return ask(&VantrellAPI::listProjects, stop);
}

std::optional<std::string> ServiceSession::knownProject(const std::optional<std::string> &asked) {
    return asked ? asked : Settings(Settings::defaultFile()).string("selectedProjectId");
}

Task<std::expected<std::string, APIError>> ServiceSession::projectForUpload(std::optional<std::string> asked,
                                                                            std::stop_token stop) {
    if (auto known = knownProject(asked))
        co_return std::move(*known);
    const auto projects = co_await listProjects(stop);
    if (!projects)
        co_return std::unexpected(projects.error());
    if (projects->empty())
        co_return std::unexpected(APIError::http(404, "The account has no project yet"));
    co_return projects->front().id;
}

Task<std::expected<std::optional<std::string>, APIError>>
ServiceSession::projectThatExists(std::stop_token stop) {
    auto chosen = knownProject(std::nullopt);
    const auto projects = co_await listProjects(stop);
    if (!projects && (stop.stop_requested() || projects.error().as<APIError::NotPaired>()))
        co_return std::unexpected(projects.error());
    const bool stands =
        !projects || std::ranges::find(*projects, chosen, &TargetProject::id) != projects->end();
    if (stands)
        co_return std::move(chosen);
    if (projects->empty())
        co_return std::nullopt;
    co_return projects->front().id;
}

} // namespace vantrell
