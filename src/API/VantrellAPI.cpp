// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/VantrellAPI.h"

#include "API/ClientVersion.h"
#include "Support/Log.h"

namespace vantrell {

namespace {

/// The value of a 2xx body, read by `Read` from its JSON object.
template <typename Read>
auto decode(const std::string &body, Read read)
    -> std::expected<std::invoke_result_t<Read, JsonReader &>, APIError> {
    std::optional<JsonError> problem;
    if (const auto json = parseJson(body); !json) {
        problem = json.error();
    } else {
        JsonReader reader(*json);
        auto value = read(reader);
        if (!reader.error())
            return value;
        problem = reader.error();
    }
    qCCritical(logUpload, "decode failure: %s", problem->message.c_str());
    return std::unexpected(APIError(APIError::MalformedResponse{}));
}

std::vector<TargetProject> readProjects(JsonReader &reader) {
    std::vector<TargetProject> projects;
    for (const nlohmann::json &row : reader.array("projects")) {
        JsonReader rowReader(row, "projects[" + std::to_string(projects.size()) + "]");
        projects.push_back(TargetProject::decode(rowReader));
        reader.adopt(rowReader);
    }
    return projects;
}

} // namespace

VantrellAPI::VantrellAPI(HttpClient &http, ServiceURL base, KeyProvider keyProvider,
                         std::function<void()> onAuthFailure)
    : m_http(http), m_base(std::move(base)), m_keyProvider(std::move(keyProvider)),
      m_onAuthFailure(std::move(onAuthFailure)) {}

VantrellAPI::Result<std::vector<TargetProject>> VantrellAPI::listProjects(std::stop_token stop) const {
    const auto body = co_await send(HttpMethod::get, "v1/capture/projects", std::nullopt, stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return decode(*body, readProjects);
}

VantrellAPI::Result<CaptureLimits> VantrellAPI::limits(std::stop_token stop) const {
    const auto body = co_await send(HttpMethod::get, "v1/capture/limits", std::nullopt, stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return decode(*body, CaptureLimits::decode);
}

VantrellAPI::Result<SignedCapture> VantrellAPI::sign(CaptureRegistration registration,
                                                     std::stop_token stop) const {
    const auto body = co_await send(HttpMethod::post, "v1/capture/sign", registration.toJson(), stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return decode(*body, SignedCapture::decode);
}

VantrellAPI::Result<SignedCapture> VantrellAPI::refresh(std::string assetId, std::stop_token stop) const {
    const auto body =
        co_await send(HttpMethod::post, "v1/capture/" + assetId + "/refresh", std::nullopt, stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return decode(*body, SignedCapture::decode);
}

VantrellAPI::Result<void> VantrellAPI::confirm(std::string assetId, std::stop_token stop) const {
    const auto body =
        co_await send(HttpMethod::post, "v1/capture/" + assetId + "/confirm", std::nullopt, stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return std::expected<void, APIError>();
}

VantrellAPI::Result<void> VantrellAPI::postEvents(std::string eventsJson, std::stop_token stop) const {
    const auto body =
        co_await send(HttpMethod::post, "v1/capture/events", "{\"events\":" + eventsJson + "}", stop);
    if (!body)
        co_return std::unexpected(body.error());
    co_return std::expected<void, APIError>();
}

VantrellAPI::Result<std::string> VantrellAPI::send(HttpMethod method, std::string path,
                                                   std::optional<std::string> body,
                                                   std::stop_token stop) const {
    const std::optional<std::string> key = m_keyProvider();
    if (!key)
        co_return std::unexpected(APIError(APIError::NotPaired{}));
    HttpRequest request;
    request.method = method;
    request.url = m_base.appending(path);
    request.headers = {{"Authorization", "Bearer " + *key}, {"X-Vantrell-Capture-Version", clientVersion()}};
    request.silence = std::chrono::seconds(60);
    if (body) {
        request.headers.add("Content-Type", "application/json");
        request.body = std::move(*body);
    }
    auto response = co_await m_http.send(std::move(request), stop);
    if (!response)
        co_return std::unexpected(APIError::of(response.error()));
    if (!response->isSuccess())
        co_return std::unexpected(failureOf(*response));
    // Somebody on the way said yes, not the service: a confirmation must not be believed then.
    if (response->isWebPage()) {
        qCCritical(logUpload, "decode failure: not JSON but a web page");
        co_return std::unexpected(APIError(APIError::MalformedResponse{}));
    }
    co_return std::move(response->body);
}

APIError VantrellAPI::failureOf(const HttpResponse &response) const {
    const auto json = parseJson(response.body);
    std::optional<std::string> message;
    std::optional<std::string> assetId;
    if (json) {
        JsonReader reader(*json);
        message = reader.optionalString("error");
        // A refused key says so by its error alone, whatever else stands beside it.
        if (response.status != 401)
            assetId = reader.optionalString("assetId");
        // One mistyped key makes the whole body count as none.
        if (reader.error())
            message = assetId = std::nullopt;
    }
    if (response.status == 401 && message == "Invalid or revoked API key") {
        if (m_onAuthFailure)
            m_onAuthFailure();
        return APIError(APIError::NotPaired{});
    }
    if (response.status == 409 && assetId)
        return APIError(APIError::AlreadyUploaded{*assetId});
    return APIError::http(response.status, message);
}

} // namespace vantrell
