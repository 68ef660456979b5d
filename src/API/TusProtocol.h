// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TransferError.h"
#include "API/UploadDescriptor.h"
#include "Http/HttpClient.h"
#include "Support/Task.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// The exchanges of the tus 1.0.0 protocol with one upload's credentials. Main thread; must outlive its
/// tasks.
class TusProtocol {
public:
    /// What a server says about an upload.
    struct State {
        std::int64_t offset = 0;
        /// The whole upload's size, where the server tells it.
        std::optional<std::int64_t> length;
    };

    TusProtocol(HttpClient &http, TusUpload target);

    /// POST: a new upload; its absolute address.
    Task<std::expected<std::string, TransferError>> createUpload(std::int64_t totalBytes,
                                                                 std::stop_token stop) const;

    /// HEAD: what the server holds, or none for any reason at all.
    Task<std::optional<State>> probeOffset(std::string location, std::stop_token stop) const;

    /// PATCH: appends a part of the file; the offset that the server answers.
    Task<std::expected<std::int64_t, TransferError>> patchChunk(std::string location, std::int64_t offset,
                                                                FileRange chunk, std::stop_token stop) const;

    /// HEAD: what the server holds, or `fallback` when it does not say.
    Task<std::expected<std::int64_t, TransferError>>
    currentOffset(std::string location, std::int64_t fallback, std::stop_token stop) const;

private:
    HttpRequest request(HttpMethod method, const std::string &url, std::chrono::seconds silence) const;

    HttpClient &m_http;
    const TusUpload m_target;
};

} // namespace vantrell
