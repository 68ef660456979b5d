// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/TusUploader.h"

#include "API/FileStamp.h"
#include "API/TusProtocol.h"
#include "Http/Url.h"

#include <algorithm>

namespace vantrell {

namespace {

constexpr int mostFailures = 8;

std::unexpected<TransferError> cancelledTransfer() {
    return std::unexpected<TransferError>(APIError::of(TransportError::cancelled()));
}

/// Another try may heal it.
bool isPassing(const TransferError &error) {
    const auto *api = std::get_if<APIError>(&error);
    if (!api)
        return false;
    const auto *http = api->as<APIError::Http>();
    if (!http || http->status < 400 || http->status > 499)
        return true;
    return http->status == 408 || http->status == 409 || http->status == 423 || http->status == 429;
}

} // namespace

/// The state of one call of `upload`, owned by its coroutine.
struct TusUploader::Transfer {
    const std::filesystem::path file;
    const std::int64_t chunkSize;
    const FileStamp stamp;
    const TusProtocol protocol;
    const Callbacks callbacks;
    const std::stop_token stop;
    std::optional<std::string> location;
    std::int64_t offset = 0;
    int failures = 0;
    /// The offset is what HEAD said, not only what a PATCH was answered.
    bool isAsked = false;

    bool isComplete() const { return offset >= stamp.size; }
    bool fileIsTheSame() const { return FileStamp::of(file) == stamp; }
};

std::expected<std::int64_t, PlatformError> TusUploader::fileSize(const std::filesystem::path &file) {
    const auto stamp = FileStamp::of(file);
    if (!stamp)
        return std::unexpected(stamp.error());
    return stamp->size;
}

Task<std::expected<void, TransferError>> TusUploader::upload(std::filesystem::path file, TusUpload target,
                                                             std::optional<std::string> existingLocation,
                                                             Callbacks callbacks,
                                                             std::stop_token stop) const {
    // Chunks of no size would never come to an end.
    if (!Url::parse(target.endpoint) || target.chunkSize < 1)
        co_return std::unexpected(APIError(APIError::MalformedResponse{}));
    const auto stamp = FileStamp::of(file);
    if (!stamp)
        co_return std::unexpected(stamp.error());
    const std::int64_t chunkSize = target.chunkSize;
    if (existingLocation && !Url::parse(*existingLocation))
        existingLocation.reset();
    Transfer transfer{std::move(file),
                      chunkSize,
                      *stamp,
                      TusProtocol(m_http, std::move(target)),
                      callbacks,
                      std::move(stop),
                      std::move(existingLocation)};
    if (const auto begun = co_await begin(transfer); !begun)
        co_return begun;
    if (const auto sent = co_await sendChunks(transfer); !sent)
        co_return sent;
    if (!transfer.fileIsTheSame())
        co_return std::unexpected(ContentMismatch{});
    co_return std::expected<void, TransferError>();
}

Task<std::expected<void, TransferError>> TusUploader::begin(Transfer &transfer) const {
    if (transfer.location) {
        auto state = co_await transfer.protocol.probeOffset(*transfer.location, transfer.stop);
        // More than there is: ask once more before starting anew for it.
        if (state && state->offset > transfer.stamp.size)
            state = co_await transfer.protocol.probeOffset(*transfer.location, transfer.stop);
        if (transfer.stop.stop_requested())
            co_return cancelledTransfer();
        if (state) {
            const bool isThisFile = state->length.value_or(transfer.stamp.size) == transfer.stamp.size;
            if (!isThisFile || state->offset < 0 || state->offset > transfer.stamp.size)
                co_return std::unexpected(ContentMismatch{});
            transfer.offset = state->offset;
            transfer.isAsked = true;
            co_return std::expected<void, TransferError>();
        }
    }
    auto created = co_await transfer.protocol.createUpload(transfer.stamp.size, transfer.stop);
    if (!created)
        co_return std::unexpected(std::move(created.error()));
    transfer.location = std::move(*created);
    if (transfer.callbacks.onLocation)
        co_await transfer.callbacks.onLocation(*transfer.location);
    co_return std::expected<void, TransferError>();
}

Task<std::expected<void, TransferError>> TusUploader::sendChunks(Transfer &transfer) const {
    while (!transfer.isComplete()) {
        if (transfer.stop.stop_requested())
            co_return cancelledTransfer();
        auto sent = co_await sendChunk(transfer);
        if (sent && transfer.isComplete() && !transfer.isAsked)
            sent = co_await verify(transfer);
        if (!sent)
            sent = co_await recover(transfer, std::move(sent.error()));
        if (!sent)
            co_return sent;
    }
    co_return std::expected<void, TransferError>();
}

Task<std::expected<void, TransferError>> TusUploader::sendChunk(Transfer &transfer) const {
    const auto now = FileStamp::of(transfer.file);
    if (!now)
        co_return std::unexpected(now.error());
    if (*now != transfer.stamp)
        co_return std::unexpected(ContentMismatch{});

    const std::int64_t length = std::min(transfer.chunkSize, transfer.stamp.size - transfer.offset);
    const std::int64_t end = transfer.offset + length;
    const auto answered = co_await transfer.protocol.patchChunk(
        *transfer.location, transfer.offset, FileRange{transfer.file, transfer.offset, length},
        transfer.stop);
    if (!answered)
        co_return std::unexpected(answered.error());
    std::int64_t held = *answered;
    transfer.isAsked = held > end;
    if (held > end) {
        // More than was sent: ask once more before believing it.
        const auto asked = co_await transfer.protocol.currentOffset(*transfer.location, end, transfer.stop);
        if (!asked)
            co_return std::unexpected(asked.error());
        if (*asked > end)
            co_return std::unexpected(ContentMismatch{});
        held = *asked;
    }
    // No step forward is a failed chunk, or a server that always says so would keep us busy for ever.
    if (held <= transfer.offset)
        co_return std::unexpected(APIError::http(0, "TUS patch failed"));
    transfer.offset = held;
    if (transfer.callbacks.onProgress)
        transfer.callbacks.onProgress(transfer.offset, transfer.stamp.size);
    co_return std::expected<void, TransferError>();
}

Task<std::expected<void, TransferError>> TusUploader::verify(Transfer &transfer) const {
    const auto state = co_await transfer.protocol.probeOffset(*transfer.location, transfer.stop);
    if (transfer.stop.stop_requested())
        co_return cancelledTransfer();
    // Without an answer the last chunk's own stands: the confirmation will find out.
    if (!state || state->offset == transfer.stamp.size)
        co_return std::expected<void, TransferError>();
    if (state->offset > transfer.stamp.size)
        co_return std::unexpected(ContentMismatch{});
    transfer.offset = std::max<std::int64_t>(state->offset, 0);
    co_return std::unexpected(APIError::http(0, "TUS patch failed"));
}

Task<std::expected<void, TransferError>> TusUploader::recover(Transfer &transfer,
                                                              TransferError failure) const {
    if (transfer.stop.stop_requested())
        co_return cancelledTransfer();
    if (!isPassing(failure) || transfer.failures >= mostFailures)
        co_return std::unexpected(std::move(failure));
    const std::chrono::seconds wait(std::min(1 << (transfer.failures + 1), 30));
    if (!co_await m_clock.sleep(wait, transfer.stop))
        co_return cancelledTransfer();
    const auto asked =
        co_await transfer.protocol.currentOffset(*transfer.location, transfer.offset, transfer.stop);
    if (!asked)
        co_return std::unexpected(asked.error());
    ++transfer.failures;
    transfer.offset = std::max<std::int64_t>(*asked, 0);
    transfer.isAsked = true;
    co_return std::expected<void, TransferError>();
}

} // namespace vantrell
