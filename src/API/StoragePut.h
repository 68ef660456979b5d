// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TransferError.h"
#include "Http/HttpClient.h"
#include "Support/Task.h"

#include <expected>
#include <filesystem>
#include <stop_token>
#include <string>

namespace vantrell {

/// Sends a whole file or buffer to a pre-signed address with one PUT. Main thread; must outlive its
/// transfers. A status outside 200..299 fails with "Storage rejected the upload".
class StoragePut {
public:
    explicit StoragePut(HttpClient &http) : m_http(http) {}

    /// Streams from disk.
    Task<std::expected<void, TransferError>> putFile(std::filesystem::path file, std::string url,
                                                     std::string mime, std::stop_token stop) const;
    Task<std::expected<void, TransferError>> putData(std::string bytes, std::string url, std::string mime,
                                                     std::stop_token stop) const;

private:
    Task<std::expected<void, TransferError>> put(HttpBody body, std::int64_t size, std::string url,
                                                 std::string mime, std::stop_token stop) const;

    HttpClient &m_http;
};

} // namespace vantrell
