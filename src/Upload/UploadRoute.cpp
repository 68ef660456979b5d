// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadRoute.h"

#include "Upload/UploadMessages.h"

namespace vantrell {

namespace {

UploadRoute routeForStatus(const APIError::Http &error, UploadJournalEntry::Phase phase) {
    const int status = error.status;
    const std::string message = error.message.value_or(std::string());
    // A 401 that is not about the key comes from something on the way and passes.
    if (status == 401 || status == 408 || status == 429 || status < 400 || status >= 500)
        return route::Retry{};
    if (status == 404 && message == "Project not found")
        return route::ProjectGone{};
    if (status == 404 && phase == UploadJournalEntry::Phase::confirming)
        return route::Restart{};
    if (status == 413)
        return route::Park{uploadMessages::overSizeLimit};
    if (status == 403 && !message.empty())
        return route::Park{message};
    return route::Park{uploadMessages::failed};
}

} // namespace

UploadRoute routeFor(const UploadFailure &failure, UploadJournalEntry::Phase phase) {
    const auto *api = std::get_if<APIError>(&failure);
    if (!api)
        return route::Retry{};
    if (api->as<APIError::NotPaired>())
        return route::Park{uploadMessages::connectionExpired};
    if (const auto *uploaded = api->as<APIError::AlreadyUploaded>())
        return route::AlreadyUploaded{uploaded->assetId};
    if (const auto *http = api->as<APIError::Http>())
        return routeForStatus(*http, phase);
    return route::Retry{};
}

} // namespace vantrell
