// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadAttempt.h"

#include "API/StoragePut.h"
#include "API/TusUploader.h"
#include "API/VantrellAPI.h"
#include "Shelf/ShelfStore.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"
#include "Upload/SideFiles.h"
#include "Upload/UploadJournal.h"

namespace vantrell {

namespace {

using Phase = UploadJournalEntry::Phase;

/// How far a card's progress goes while the main file is sent; the rest is the side files and the answer.
constexpr double progressOfTransfer = 0.95;
constexpr double progressAfterPut = 0.9;
constexpr int sidecarAttempts = 3;

/// Nobody looks at it: whoever awaits an attempt asks its stop token first.
std::unexpected<UploadFailure> stopped() {
    return std::unexpected<UploadFailure>(APIError::of(TransportError::cancelled()));
}

std::optional<std::int64_t> sizeOf(const std::string &path) {
    const auto size = TusUploader::fileSize(path);
    return size ? std::optional(*size) : std::nullopt;
}

} // namespace

UploadJournalEntry &UploadAttempt::entry() {
    UploadJournalEntry *const found = m_services.journal.find(m_ids.entryId);
    return found ? *found : m_none;
}

Task<bool> UploadAttempt::journalWritten(std::stop_token stop) {
    const auto written = co_await m_services.journal.written(stop);
    co_return written.has_value();
}

void UploadAttempt::showProgress(double progress) {
    m_services.shelf.update(m_ids.shelfId, ShelfItem::Uploading{progress});
}

Task<std::expected<void, UploadFailure>> UploadAttempt::run(std::stop_token stop) {
    const auto capture = co_await descriptors(stop);
    if (!capture)
        co_return std::unexpected(capture.error());
    entry().phase = Phase::uploading;
    m_services.journal.save();
    if (!co_await journalWritten(stop))
        co_return stopped();

    if (const auto sent = co_await sendMain(*capture, stop); !sent)
        co_return sent;
    co_await uploadThumb(*capture, stop);
    co_await uploadSidecar(*capture, stop);
    if (stop.stop_requested())
        co_return stopped();
    co_return co_await confirm(capture->assetId, stop);
}

Task<std::expected<SignedCapture, UploadFailure>> UploadAttempt::descriptors(std::stop_token stop) {
    const std::optional<std::string> assetId = entry().assetId;
    if (!assetId)
        co_return co_await sign(stop);
    auto refreshed = co_await m_services.api.refresh(*assetId, stop);
    if (stop.stop_requested())
        co_return stopped();
    if (refreshed)
        co_return std::move(*refreshed);
    const auto *http = refreshed.error().as<APIError::Http>();
    if (!http || http->status != 404)
        co_return std::unexpected<UploadFailure>(refreshed.error());
    // The service has forgotten it: register it once more.
    entry().assetId.reset();
    entry().tusLocation.reset();
    m_services.journal.save();
    if (!co_await journalWritten(stop))
        co_return stopped();
    co_return co_await sign(stop);
}

Task<std::expected<SignedCapture, UploadFailure>> UploadAttempt::sign(std::stop_token stop) {
    const UploadJournalEntry now = entry();
    const auto bytes = TusUploader::fileSize(now.masterPath);
    if (!bytes)
        co_return std::unexpected<UploadFailure>(bytes.error());
    auto capture = co_await m_services.api.sign(
        {
            .projectId = now.projectId,
            .kind = now.kind,
            .mime = now.mime,
            .bytes = *bytes,
            .durationMs = now.durationMs,
            .name = now.name,
            .thumbBytes = now.thumbPath ? sizeOf(*now.thumbPath) : std::nullopt,
            .hasMeta = now.metaPath && sizeOf(*now.metaPath),
            .captureId = now.captureId.toString(QUuid::WithoutBraces).toStdString(),
        },
        stop);
    if (stop.stop_requested())
        co_return stopped();
    if (!capture)
        co_return std::unexpected<UploadFailure>(capture.error());
    entry().assetId = capture->assetId;
    co_return std::move(*capture);
}

Task<UploadAttempt::Outcome> UploadAttempt::sendMain(const SignedCapture &capture, std::stop_token stop) {
    const auto *whole = std::get_if<StandardUpload>(&capture.main.upload);
    const auto sent = whole ? co_await putMain(*whole, stop)
                            : co_await tusMain(std::get<TusUpload>(capture.main.upload), stop);
    if (stop.stop_requested())
        co_return stopped();
    if (sent)
        co_return Outcome();
    if (std::holds_alternative<ContentMismatch>(sent.error())) {
        // The file is not what was announced: only a new registration, of what it is now, can help.
        entry().reset();
        m_services.journal.save();
    }
    co_return std::unexpected<UploadFailure>(StorageUploadError{sent.error()});
}

Task<std::expected<void, TransferError>> UploadAttempt::putMain(StandardUpload target, std::stop_token stop) {
    const StoragePut put(m_services.http);
    const auto sent = co_await put.putFile(entry().masterFile(), target.uploadUrl, entry().mime, stop);
    if (sent && !stop.stop_requested())
        showProgress(progressAfterPut);
    co_return sent;
}

Task<std::expected<void, TransferError>> UploadAttempt::tusMain(TusUpload target, std::stop_token stop) {
    const TusUploader uploader(m_services.http, m_services.clock);
    TusUploader::Callbacks callbacks{
        .onLocation = [this, stop](std::string location) { return keepLocation(std::move(location), stop); },
        .onProgress =
            [this, stop](std::int64_t sent, std::int64_t total) {
                if (!stop.stop_requested())
                    showProgress(double(sent) / double(total) * progressOfTransfer);
            },
    };
    co_return co_await uploader.upload(entry().masterFile(), std::move(target), entry().tusLocation,
                                       std::move(callbacks), stop);
}

Task<> UploadAttempt::keepLocation(std::string location, std::stop_token stop) {
    entry().tusLocation = std::move(location);
    m_services.journal.save();
    co_await journalWritten(stop);
}

Task<> UploadAttempt::uploadThumb(const SignedCapture &capture, std::stop_token stop) {
    if (!capture.thumb)
        co_return;
    auto bytes = co_await runBlocking([path = entry().thumbPath] { return sideFiles::read(path); }, stop);
    if (!bytes || !*bytes)
        co_return;
    const StoragePut put(m_services.http);
    const auto sent = co_await put.putData(std::move(**bytes), capture.thumb->uploadUrl, "image/jpeg", stop);
    if (!sent && !stop.stop_requested())
        qCCritical(logUpload, "thumb upload failed (asset still confirms): %s",
                   logText(sent.error()).c_str());
}

Task<> UploadAttempt::uploadSidecar(const SignedCapture &capture, std::stop_token stop) {
    if (!capture.meta || stop.stop_requested())
        co_return;
    const auto bytes =
        co_await runBlocking([path = entry().metaPath] { return sideFiles::read(path); }, stop);
    if (!bytes || !*bytes)
        co_return;
    const StoragePut put(m_services.http);
    for (int attempt = 1;; ++attempt) {
        const auto sent = co_await put.putData(**bytes, capture.meta->uploadUrl, "application/json", stop);
        if (sent || stop.stop_requested())
            co_return;
        if (attempt == sidecarAttempts) {
            qCCritical(
                logUpload,
                "SIDECAR LOST for asset %s: all 3 attempts failed, capture confirms without metadata: %s",
                capture.assetId.c_str(), logText(sent.error()).c_str());
            co_return;
        }
        if (!co_await m_services.clock.sleep(std::chrono::seconds(1 << (attempt - 1)), stop))
            co_return;
    }
}

Task<UploadAttempt::Outcome> UploadAttempt::confirm(std::string assetId, std::stop_token stop) {
    entry().phase = Phase::confirming;
    m_services.journal.save();
    if (!co_await journalWritten(stop))
        co_return stopped();
    const auto confirmed = co_await m_services.api.confirm(assetId, stop);
    if (!confirmed)
        co_return std::unexpected<UploadFailure>(confirmed.error());
    co_return Outcome();
}

} // namespace vantrell
