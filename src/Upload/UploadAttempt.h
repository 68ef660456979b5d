// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/SignedCapture.h"
#include "Support/Task.h"
#include "Upload/UploadFailure.h"
#include "Upload/UploadIds.h"
#include "Upload/UploadJournalEntry.h"
#include "Upload/UploadServices.h"

#include <expected>
#include <stop_token>

namespace vantrell {

/// One pass over a capture: register it (or ask anew about a registered one), send the main file, the
/// thumbnail and the metadata, confirm. Each step is in the journal before the next call leaves. Belongs to
/// the coroutine that awaits it. Main thread.
class UploadAttempt {
public:
    UploadAttempt(UploadServices services, const UploadIds &ids) : m_services(services), m_ids(ids) {}

    Task<std::expected<void, UploadFailure>> run(std::stop_token stop);

private:
    using Outcome = std::expected<void, UploadFailure>;

    /// Where everything goes.
    Task<std::expected<SignedCapture, UploadFailure>> descriptors(std::stop_token stop);
    Task<std::expected<SignedCapture, UploadFailure>> sign(std::stop_token stop);

    Task<Outcome> sendMain(const SignedCapture &capture, std::stop_token stop);
    Task<std::expected<void, TransferError>> putMain(StandardUpload target, std::stop_token stop);
    Task<std::expected<void, TransferError>> tusMain(TusUpload target, std::stop_token stop);
    Task<> keepLocation(std::string location, std::stop_token stop);

    // Neither stands in the way of the capture itself.
    Task<> uploadThumb(const SignedCapture &capture, std::stop_token stop);
    Task<> uploadSidecar(const SignedCapture &capture, std::stop_token stop);

    Task<Outcome> confirm(std::string assetId, std::stop_token stop);

    /// The journal's own entry, or an empty one when it is gone.
    UploadJournalEntry &entry();
    /// Waits until the changes so far are written; false when the upload was stopped.
    Task<bool> journalWritten(std::stop_token stop);
    void showProgress(double progress);

    const UploadServices m_services;
    const UploadIds m_ids;
    UploadJournalEntry m_none;
};

} // namespace vantrell
