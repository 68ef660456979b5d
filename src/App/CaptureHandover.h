// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/ServiceAccount.h"
#include "Capture/CaptureResult.h"
#include "Recording/Failure.h"
#include "Recording/RecordingRecord.h"
#include "Session/CaptureSettings.h"
#include "Session/UploadRun.h"
#include "Shelf/ShelfItem.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <QUuid>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>

namespace vantrell {

/// Hands finished captures to the shelf and to the upload pipeline. A capture is in the upload journal from
/// then on, also while no account is connected or no project is chosen, so that nothing ends with the
/// process. Main thread.
class CaptureHandover {
public:
    /// All outlive the handover.
    struct Services {
        UploadRun &uploads;
        ServiceAccount &account;
        CaptureSettings &settings;
        Clock &clock;
    };

    explicit CaptureHandover(Services services) : m_services(services) {}
    CaptureHandover(const CaptureHandover &) = delete;
    CaptureHandover &operator=(const CaptureHandover &) = delete;

    /// On the card with that id, else on a new one. `recoverable` is what would recover the capture after a
    /// crash, as that layer of the recording: it is forgotten once the journal has the capture.
    void deliver(std::shared_ptr<const CaptureResult> capture, std::optional<QUuid> shelfId,
                 std::filesystem::path recoverable = {}, RecordingLayer layer = RecordingLayer::screen);
    /// Waits until all that was delivered is in the journal on disk.
    Task<> safe(std::stop_token stop);
    /// The user tries a card again.
    void retry(const ShelfItem &item);
    /// The same with a project that was chosen on the card alone.
    void retryWith(const ShelfItem &item, const std::string &projectId);

    /// A recording could not be saved, but `RecordingRecovery` may make a capture of it: the card's user may
    /// try again.
    void keepUnsaved(std::filesystem::path recoverable, const QUuid &card);
    /// Makes cards of what crashes have left, but not of what is on its way already or was: `taken` are the
    /// files of the journal as the program found it. Does nothing while it is at it. What could not be
    /// recovered keeps its card, whose user may try again.
    void offerRecovered(std::set<std::filesystem::path> taken);

private:
    bool mayUpload() const;
    Task<> forgetWhenSafe(std::filesystem::path file, std::filesystem::path recoverable, RecordingLayer layer,
                          std::stop_token stop);
    Task<> recoverAll(std::stop_token stop);
    Task<> recover(std::filesystem::path what, std::stop_token stop);
    void showUnrecovered(const std::filesystem::path &what, const Failure &failure);
    /// On that card, if it is there.
    Task<> offer(std::filesystem::path what, RecordingLayer layer, std::optional<CaptureResult> found,
                 QUuid card, std::stop_token stop);

    const Services m_services;
    /// The movies that the upload journal has, or has had in this run of the program, as long as what would
    /// recover them may be there.
    std::set<std::filesystem::path> m_taken;
    bool m_isRecovering = false;
    /// What is being recovered or has been, in this run of the program.
    std::set<std::filesystem::path> m_recovered;
    /// The cards of what could not be recovered so far.
    std::map<std::filesystem::path, QUuid> m_unrecovered;
    TaskScope m_scope;
};

} // namespace vantrell
