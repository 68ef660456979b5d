// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/CaptureDelivery.h"

#include "Capture/CaptureStorage.h"
#include "CommandLine/OpenSession.h"
#include "Recording/RecordingRecovery.h"
#include "Session/CapturePruning.h"
#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"

#include <utility>
#include <vector>

namespace vantrell {

CaptureDelivery::CaptureDelivery(Options options, CommandContext context)
    : m_options(std::move(options)), m_context(std::move(context)) {}

Task<std::expected<void, ExitCode>> CaptureDelivery::prepare(std::stop_token stop) {
    std::vector<std::filesystem::path> folders{CaptureStorage::directory()};
    if (m_options.folder)
        folders.push_back(*m_options.folder);
    for (const std::filesystem::path &folder : folders) {
        if (const auto writable = prepareFolder(folder); !writable) {
            m_context.reporter.failure(writable.error().description());
            co_return std::unexpected(ExitCode::failed);
        }
    }
    co_await runBlocking([] { pruneCaptures({}); }, stop);
    if (m_options.upload) {
        auto session = openSession(m_context);
        if (!session) {
            m_context.reporter.failure(session.error());
            co_return std::unexpected(ExitCode::failed);
        }
        m_session = std::move(*session);
        auto uploads = UploadRun::create(*m_session, m_context);
        if (!uploads) {
            m_context.reporter.failure(uploads.error());
            co_return std::unexpected(ExitCode::failed);
        }
        m_uploads = std::move(*uploads);
        if (!co_await m_session->connect(stop)) {
            m_context.reporter.failure(APIError(APIError::NotPaired{}).description());
            co_return std::unexpected(ExitCode::notConnected);
        }
        // There is time until there is a capture, which then goes into the journal without waiting for them.
        m_scope.start(this, &CaptureDelivery::fetchLimits);
    }
    co_return std::expected<void, ExitCode>();
}

Task<ExitCode> CaptureDelivery::deliver(CaptureResult capture, bool isPartial, nlohmann::json more,
                                        std::filesystem::path recoverable, std::stop_token stop) {
    const auto saved = co_await runBlocking(
        [capture, recoverable, folder = m_options.folder] {
            auto done = saveCapture(capture, folder, [&recoverable](const std::filesystem::path &place) {
                RecordingRecovery::noteMove(recoverable, place);
            });
            if (done)
                RecordingRecovery::forget(recoverable);
            return done;
        },
        stop);
    if (!saved) {
        if (const auto *const error = std::get_if<PlatformError>(&saved.error()))
            m_context.reporter.failure(error->description());
        co_return ExitCode::failed;
    }
    nlohmann::json json = saved->json(capture, isPartial);
    json.update(more);
    std::string text = saved->file.string();
    ExitCode code = ExitCode::success;
    if (m_session) {
        const auto asset = co_await upload(capture, *saved, stop);
        if (asset) {
            json["assetId"] = *asset;
            text += " is uploaded as " + *asset;
        } else {
            // The capture itself is safe: it is told all the same, with what went wrong behind it.
            json["error"] = asset.error();
            text += " is kept: " + asset.error();
            code = ExitCode::failed;
        }
    }
    m_context.reporter.result(json, text);
    co_return code;
}

void CaptureDelivery::interrupt() {
    if (m_uploads)
        m_uploads->interrupt();
    // Not in here: the wait resumes inside the request, and the caller may end with it.
    EventLoop::current().post([choosing = m_choosing]() mutable { choosing.request_stop(); });
}

Task<> CaptureDelivery::fetchLimits(std::stop_token stop) {
    co_await m_uploads->fetchLimits(stop);
}

Task<std::expected<std::string, std::string>>
CaptureDelivery::upload(CaptureResult capture, SavedCapture saved, std::stop_token stop) {
    capture.fileURL = saved.file;
    // Into the journal before anything is waited for: a project that is not known yet follows.
    const auto project = ServiceSession::knownProject(m_options.projectId);
    const QUuid id = m_uploads->add(capture, project);
    std::string problem;
    if (!project) {
        const auto found = co_await m_session->projectForUpload(std::nullopt, m_choosing.get_token());
        if (found)
            m_uploads->add(std::move(capture), *found);
        else
            problem = m_choosing.stop_requested() ? uploadInterrupted : found.error().description();
    }
    // Without a project there is nothing to wait for but the journal.
    const bool hasEnded =
        co_await m_uploads->finish(problem.empty() ? std::set{id} : std::set<QUuid>(), stop);
    if (!problem.empty())
        co_return std::unexpected(problem);
    if (!hasEnded)
        co_return std::unexpected(uploadInterrupted);
    co_return m_uploads->endOf(id)->assetId;
}

} // namespace vantrell
