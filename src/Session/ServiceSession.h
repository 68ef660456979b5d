// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/VantrellAPI.h"
#include "Auth/KeyProvider.h"
#include "Auth/Keychain.h"
#include "Http/HttpClient.h"
#include "Support/Task.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The service as this program talks to it: one HTTP client, the key, the API client. Main thread.
class ServiceSession {
public:
    /// `environmentKey` is the key that the environment held and was wiped of. Fails with a sentence when the
    /// service's address is unusable.
    static std::expected<std::unique_ptr<ServiceSession>, std::string>
    create(std::optional<std::string> environmentKey);

    /// Fetches the key from the keyring unless the environment holds one. False when there is none; the
    /// keyring's own problem, if that is why, is in `keychain().problem()`.
    Task<bool> connect(std::stop_token stop, Keychain::Asking asking = Keychain::Asking::allowed);

    HttpClient &http() { return m_http; }
    VantrellAPI &api() { return m_api; }
    Keychain &keychain() { return m_keychain; }
    KeyProvider &keys() { return m_keyProvider; }
    const ServiceURL &url() const { return m_url; }

    /// The service refused the key in use. Unset: the key of the environment is dropped, and a stored one
    /// stays, since a command does not disconnect the account. Called in the middle of a request.
    std::function<void()> onKeyRejected;

    /// As the API client's. When the service refuses the key of the environment they go on with the stored
    /// one.
    VantrellAPI::Result<CaptureLimits> limits(std::stop_token stop);
    VantrellAPI::Result<std::vector<TargetProject>> listProjects(std::stop_token stop);

    /// The project that a new capture goes to, as far as this computer knows: the one asked for, else the
    /// user's choice. Whether that still exists the upload finds out, when the capture is safe in the
    /// journal.
    static std::optional<std::string> knownProject(const std::optional<std::string> &asked);

    /// The same, or else the account's first project, for which the service is asked.
    Task<std::expected<std::string, APIError>> projectForUpload(std::optional<std::string> asked,
                                                                std::stop_token stop);

    /// The user's choice if it still exists, else the account's first project. As long as the service does
    /// not say, the choice stands, if there is one. The error: not connected, or the stop was requested.
    Task<std::expected<std::optional<std::string>, APIError>> projectThatExists(std::stop_token stop);

private:
    ServiceSession(ServiceURL url, std::optional<std::string> environmentKey);

    template <typename T>
    VantrellAPI::Result<T> ask(VantrellAPI::Result<T> (VantrellAPI::*operation)(std::stop_token) const,
                               std::stop_token stop);

    ServiceURL m_url;
    Keychain::Asking m_asking = Keychain::Asking::allowed;
    HttpClient m_http;
    Keychain m_keychain;
    KeyProvider m_keyProvider;
    VantrellAPI m_api;
};

} // namespace vantrell
