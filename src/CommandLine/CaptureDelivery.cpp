// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/CaptureDelivery.h"

#include "Capture/CaptureStorage.h"
#include "CommandLine/OpenSession.h"
#include "Recording/RecordingRecovery.h"
#include "Support/BlockingWork.h"

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
    }
    co_return std::expected<void, ExitCode>();
}

Task<ExitCode> CaptureDelivery::deliver(CaptureResult capture, bool isPartial, nlohmann::json more,
                                        std::filesystem::path recoverable, std::stop_token stop) {
    const auto saved = co_await runBlocking(
        [capture, recoverable, folder = m_options.folder] {
            auto done = saveCapture(capture, folder);
            if (done)
                RecordingRecovery::forget(recoverable);
            return done;
        },
        stop);
    if (!saved)
        co_return ExitCode::failed;
    if (!*saved) {
        m_context.reporter.failure(saved->error().description());
        co_return ExitCode::failed;
    }
    if (onSaved)
        onSaved();
    nlohmann::json json = (*saved)->json(capture, isPartial);
    json.update(more);
    std::string text = (*saved)->file.string();
    ExitCode code = ExitCode::success;
    if (m_session) {
        const auto asset = co_await upload(capture, **saved, stop);
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
}

Task<std::expected<std::string, std::string>>
CaptureDelivery::upload(CaptureResult capture, SavedCapture saved, std::stop_token stop) {
    const auto project = co_await m_session->chooseProject(m_options.projectId, stop);
    if (!project)
        co_return std::unexpected(project.error().description());
    co_await m_uploads->fetchLimits(stop);
    capture.fileURL = saved.file;
    const QUuid id = m_uploads->add(std::move(capture), *project);
    if (!co_await m_uploads->finish(stop))
        co_return std::unexpected(uploadInterrupted);
    const UploadEnd *const end = m_uploads->endOf(id);
    co_return end ? end->assetId : std::unexpected(uploadInterrupted);
}

} // namespace vantrell
