// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "API/CaptureLimits.h"
#include "API/CaptureRegistration.h"
#include "API/SignedCapture.h"
#include "API/TargetProject.h"
#include "Http/HttpClient.h"
#include "Http/ServiceURL.h"
#include "Support/Task.h"

#include <expected>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The client of the video service: one operation per endpoint. Immutable; any thread with an event loop may
/// call it, concurrently. It must outlive the operations it has started. Nothing is retried here.
class VantrellAPI final {
public:
    template <typename T>
    using Result = Task<std::expected<T, APIError>>;

    /// The current API key, or none while not connected. Called once at the start of every request, on the
    /// thread of the request.
    using KeyProvider = std::function<std::optional<std::string>()>;

    /// `onAuthFailure` is called when the service declares the key invalid, on the thread of the request.
    VantrellAPI(HttpClient &http, ServiceURL base, KeyProvider keyProvider,
                std::function<void()> onAuthFailure);
    VantrellAPI(const VantrellAPI &) = delete;
    VantrellAPI &operator=(const VantrellAPI &) = delete;

    /// In the order in which the service sent them.
    Result<std::vector<TargetProject>> listProjects(std::stop_token stop) const;
    Result<CaptureLimits> limits(std::stop_token stop) const;
    /// Registers a capture.
    Result<SignedCapture> sign(CaptureRegistration registration, std::stop_token stop) const;
    /// Asks anew where a registered capture goes.
    Result<SignedCapture> refresh(std::string assetId, std::stop_token stop) const;
    /// Says that everything was sent.
    Result<void> confirm(std::string assetId, std::stop_token stop) const;
    /// Posts a batch of usage events: a JSON array, already encoded.
    Result<void> postEvents(std::string eventsJson, std::stop_token stop) const;

private:
    Result<std::string> send(HttpMethod method, std::string path, std::optional<std::string> body,
                             std::stop_token stop) const;
    APIError failureOf(const HttpResponse &response) const;

    HttpClient &m_http;
    const ServiceURL m_base;
    const KeyProvider m_keyProvider;
    const std::function<void()> m_onAuthFailure;
};

} // namespace vantrell
