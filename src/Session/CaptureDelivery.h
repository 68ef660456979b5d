// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/RecordingRecord.h"
#include "Session/SavedCapture.h"
#include "Session/ServiceSession.h"
#include "Session/UploadAgent.h"
#include "Session/UploadRun.h"
#include "Support/Cancelled.h"
#include "Support/Clock.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>

namespace vantrell {

/// Where a finished capture goes: into a folder, and to the service when asked for. Main thread.
class CaptureDelivery {
public:
    struct Options {
        /// Absent: captures stay in the captures folder.
        std::optional<std::filesystem::path> folder;
        bool upload = false;
        std::optional<std::string> projectId;
    };
    using Refusal = DeliveryRefusal;
    using Asset = UploadAgent::Asset;
    struct Delivered {
        SavedCapture saved;
        /// Absent when it was not to be uploaded.
        std::optional<Asset> asset;
    };
    /// The movies of one recording, or one capture of any kind.
    struct Captures {
        CaptureResult main;
        /// What the camera saw beside `main`.
        std::optional<CaptureResult> camera;
        /// What would recover them after a crash; empty when nothing would.
        std::filesystem::path recoverable;
        /// What `main` is to `recoverable`.
        RecordingLayer mainLayer = RecordingLayer::screen;
    };
    struct AllDelivered {
        Delivered main;
        std::optional<Delivered> camera;
        /// Why the camera's has no place; it can still be recovered.
        std::optional<PlatformError> cameraProblem;
    };
    using SessionOpener = std::function<std::expected<std::unique_ptr<ServiceSession>, std::string>()>;

    /// `openSession` is called when captures are uploaded by this process, `agent` asked whether another one
    /// does that: null when none does. The clock outlives the delivery.
    CaptureDelivery(Options options, SessionOpener openSession,
                    std::function<std::unique_ptr<UploadAgent>()> agent, Clock &clock);

    /// Looks before anything is captured, so that an unwritable folder, a wrong address or a missing
    /// connection costs no work.
    Task<std::expected<void, Refusal>> prepare(std::stop_token stop);

    /// The uploads of this run; null unless prepared to upload.
    UploadRun *uploads() { return m_uploads.get(); }

    /// What is recoverable is forgotten once the capture has its place and its side files. Then the capture
    /// is safe whatever becomes of its upload. All are saved before one is uploaded.
    Task<std::expected<AllDelivered, std::variant<PlatformError, Cancelled>>> deliver(Captures captures,
                                                                                      std::stop_token stop);

    /// Another process uploads from now on, also what is on its way: this one leaves it the journal. Nothing
    /// unless prepared to upload.
    void yieldTo(std::unique_ptr<UploadAgent> agent);

    /// Ends waiting for the upload, which can be resumed later.
    void interrupt();

private:
    void leaveJournal();
    Task<> fetchLimits(std::stop_token stop);
    Task<std::optional<Asset>> send(CaptureResult capture, std::filesystem::path file, std::stop_token stop);
    Task<Asset> upload(CaptureResult capture, std::filesystem::path file, std::stop_token stop);

    const Options m_options;
    const SessionOpener m_openSession;
    const std::function<std::unique_ptr<UploadAgent>()> m_findAgent;
    Clock &m_clock;
    /// Either an agent uploads or, with session and uploads, this process.
    std::unique_ptr<UploadAgent> m_agent;
    std::unique_ptr<ServiceSession> m_session;
    std::unique_ptr<UploadRun> m_uploads;
    /// The uploads are being waited for.
    bool m_isUploading = false;
    /// Ends what is waited for before the upload.
    std::stop_source m_choosing;
    TaskScope m_scope;
};

} // namespace vantrell
