// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TransferError.h"
#include "API/UploadDescriptor.h"
#include "Http/HttpClient.h"
#include "Support/Clock.h"
#include "Support/Task.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Sends a file to a tus server in chunks, one after the other, streaming from disk. Main thread; must
/// outlive its transfers.
///
///   saved location ── HEAD ──► the server knows an offset ──┐
///        │ it does not                                      ▼
///        └───────► POST a new upload ─► onLocation ─► PATCH a chunk ◄───────────────────┐
///                                                      │ accepted: go on from the       │
///                                                      │ offset that the server names ──┤
///                                                      │                                │
///                                                      ├ failed: wait 2, 4, 8, 16, 30,  │
///                                                      │ 30, 30, 30 s and ask by HEAD ──┤
///                                                      └ the last one accepted: ask by  │
///                                                        HEAD; less than all is failed ─┘
///
/// Only the server's offset is true: a chunk whose end is uncertain is never sent again without a HEAD in
/// between. A transfer survives 8 failed chunks; 4xx other than 408, 409, 423 and 429 ends it at once, as
/// does a file that vanished or changed.
class TusUploader {
public:
    struct Callbacks {
        /// A new upload was made; its absolute address. Its first byte is sent when the returned task has
        /// ended, so that the address can be kept safe before.
        std::function<Task<>(std::string location)> onLocation;
        /// Bytes that the server holds and the file's size, after each accepted chunk.
        std::function<void(std::int64_t sent, std::int64_t total)> onProgress;
    };

    TusUploader(HttpClient &http, Clock &clock) : m_http(http), m_clock(clock) {}

    /// Ends when the server holds all bytes. `existingLocation` is that of an earlier, interrupted transfer.
    Task<std::expected<void, TransferError>> upload(std::filesystem::path file, TusUpload target,
                                                    std::optional<std::string> existingLocation,
                                                    Callbacks callbacks, std::stop_token stop) const;

    /// The size of a regular file.
    static std::expected<std::int64_t, PlatformError> fileSize(const std::filesystem::path &file);

private:
    struct Transfer;
    Task<std::expected<void, TransferError>> begin(Transfer &transfer) const;
    Task<std::expected<void, TransferError>> sendChunks(Transfer &transfer) const;
    Task<std::expected<void, TransferError>> sendChunk(Transfer &transfer) const;
    /// After the last chunk: what answered it need not be what holds it.
    Task<std::expected<void, TransferError>> verify(Transfer &transfer) const;
    Task<std::expected<void, TransferError>> recover(Transfer &transfer, TransferError failure) const;

    HttpClient &m_http;
    Clock &m_clock;
};

} // namespace vantrell
