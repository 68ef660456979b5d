// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/CaptureHandover.h"

#include "Analytics/Analytics.h"
#include "Capture/CaptureStorage.h"
#include "Recording/RecordingRecovery.h"
#include "Support/BlockingWork.h"
#include "Support/FilePath.h"
#include "Support/Log.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr const char *connectFirst = "Connect to Vantrell in the menu bar first";
constexpr const char *nothingToUpload = "Nothing to upload. The recording never finished saving.";

} // namespace

void CaptureHandover::deliver(std::shared_ptr<const CaptureResult> capture, std::optional<QUuid> shelfId,
                              std::filesystem::path recoverable, RecordingLayer layer) {
    std::filesystem::path file = realPath(capture->fileURL);
    if (capture->kind == CaptureResult::Kind::video)
        m_taken.insert(file);
    UploadRun &uploads = m_services.uploads;
    const QUuid card = shelfId ? *shelfId : uploads.shelf().add(capture);
    if (mayUpload())
        uploads.manager().enqueue(std::move(capture), m_services.settings.selectedProjectId(), card);
    else
        uploads.manager().keep(std::move(capture), card, connectFirst);
    if (!recoverable.empty())
        m_scope.start(this, &CaptureHandover::forgetWhenSafe, std::move(file), std::move(recoverable), layer);
}

bool CaptureHandover::mayUpload() const {
    // While the keyring asks, it may still give out the key.
    return m_services.account.isPaired() || !m_services.account.pairing().hasLooked();
}

Task<> CaptureHandover::forgetWhenSafe(std::filesystem::path file, std::filesystem::path recoverable,
                                       RecordingLayer layer, std::stop_token stop) {
    if (!co_await m_services.uploads.written(stop))
        co_return;
    const auto isForgotten = co_await runBlocking(
        [recoverable, layer] { return RecordingRecovery::forget(recoverable, layer); }, stop);
    // Who is recovering may have read it before.
    if (isForgotten.value_or(false) && !m_isRecovering)
        m_taken.erase(file);
}

Task<> CaptureHandover::safe(std::stop_token stop) {
    co_await m_services.uploads.written(stop);
}

void CaptureHandover::retry(const ShelfItem &item) {
    Analytics::shared().track("cap.upload_retried");
    ShelfStore &shelf = m_services.uploads.shelf();
    // Whoever asks by a command may just have chosen it in the file.
    m_services.settings.reload();
    const auto project = m_services.settings.selectedProjectId();
    if (item.entryId) {
        m_services.uploads.manager().retry({*item.entryId, item.id}, project);
        return;
    }
    const auto unrecovered =
        std::ranges::find(m_unrecovered, item.id, [](const auto &each) { return each.second; });
    if (unrecovered != m_unrecovered.end())
        m_scope.start(this, &CaptureHandover::recover, unrecovered->first);
    else if (!item.capture)
        shelf.update(item.id, ShelfItem::Failed{nothingToUpload});
    else if (!mayUpload())
        shelf.update(item.id, ShelfItem::Failed{connectFirst});
    else if (!project)
        shelf.update(item.id, ShelfItem::NeedsProject{});
    else
        deliver(item.capture, item.id);
}

void CaptureHandover::retryWith(const ShelfItem &item, const std::string &projectId) {
    Analytics::shared().track("cap.upload_retried");
    if (item.entryId)
        m_services.uploads.manager().retry({*item.entryId, item.id}, projectId);
    else if (item.capture)
        m_services.uploads.manager().enqueue(item.capture, projectId, item.id);
}

void CaptureHandover::keepUnsaved(std::filesystem::path recoverable, const QUuid &card) {
    m_unrecovered.insert_or_assign(std::move(recoverable), card);
}

void CaptureHandover::offerRecovered(std::set<std::filesystem::path> taken) {
    m_taken.merge(taken);
    if (!std::exchange(m_isRecovering, true))
        m_scope.start(this, &CaptureHandover::recoverAll);
}

Task<> CaptureHandover::recoverAll(std::stop_token stop) {
    const auto found =
        co_await runBlocking([] { return RecordingRecovery::abandoned(CaptureStorage::directory()); }, stop);
    if (!found)
        co_return;
    for (const std::filesystem::path &what : *found)
        co_await recover(what, stop);
    m_isRecovering = false;
}

Task<> CaptureHandover::recover(std::filesystem::path what, std::stop_token stop) {
    // Its journal is there until the capture is safe, and may go while it is read.
    if (!m_recovered.insert(what).second)
        co_return;
    ShelfStore &shelf = m_services.uploads.shelf();
    if (const auto failed = m_unrecovered.find(what); failed != m_unrecovered.end())
        shelf.update(failed->second, ShelfItem::Processing{});
    auto recovered = co_await runBlocking(
        [what, now = m_services.clock.wallNow()] { return RecordingRecovery::recover(what, now); }, stop);
    if (stop.stop_requested())
        co_return;
    if (!recovered) {
        m_recovered.erase(what);
        showUnrecovered(what, recovered.error());
        co_return;
    }
    const auto failed = m_unrecovered.extract(what);
    const QUuid card = failed ? failed.mapped() : QUuid();
    co_await offer(what, RecordingLayer::screen, std::move(recovered->screen), card, stop);
    co_await offer(what, RecordingLayer::camera, std::move(recovered->camera), {}, stop);
    if (const ShelfItem *const left = shelf.find(card); left && !left->capture)
        shelf.remove(card);
}

void CaptureHandover::showUnrecovered(const std::filesystem::path &what, const Failure &failure) {
    // It stays where it is, for another try or the next start.
    qCCritical(logCapture, "recording not recovered: %s", description(failure).c_str());
    ShelfStore &shelf = m_services.uploads.shelf();
    const auto [card, isNew] = m_unrecovered.try_emplace(what);
    if (isNew)
        card->second = shelf.addProcessing("Screen recording" + std::string(recoveredSuffix));
    shelf.update(card->second, ShelfItem::Failed{"Recording failed to save: " + description(failure)});
}

Task<> CaptureHandover::offer(std::filesystem::path what, RecordingLayer layer,
                              std::optional<CaptureResult> found, QUuid card, std::stop_token stop) {
    if (!found || stop.stop_requested())
        co_return;
    // It was handed over, but its journal not forgotten yet.
    if (m_taken.contains(realPath(found->fileURL))) {
        co_await runBlocking([what, layer] { RecordingRecovery::forget(what, layer); }, stop);
        co_return;
    }
    auto capture = std::make_shared<const CaptureResult>(std::move(*found));
    ShelfStore &shelf = m_services.uploads.shelf();
    shelf.attach(capture, card);
    deliver(std::move(capture), shelf.find(card) ? std::optional(card) : std::nullopt, what, layer);
}

} // namespace vantrell
