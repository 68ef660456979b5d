// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureDelivery.h"

#include "Capture/CaptureStorage.h"
#include "Recording/RecordingRecovery.h"
#include "Session/CapturePruning.h"
#include "Support/BlockingWork.h"
#include "Support/EventLoop.h"

#include <set>
#include <utility>
#include <vector>

namespace vantrell {

namespace {

std::expected<SavedCapture, PlatformError> saveLayer(const CaptureResult &capture,
                                                     const std::optional<std::filesystem::path> &folder,
                                                     const std::filesystem::path &recoverable,
                                                     RecordingLayer layer, const std::string &name = {}) {
    auto saved = saveCapture(
        capture, folder,
        [&](const std::filesystem::path &place) { RecordingRecovery::noteMove(recoverable, place, layer); },
        name);
    if (saved)
        RecordingRecovery::forget(recoverable, layer);
    return saved;
}

std::expected<CaptureDelivery::AllDelivered, PlatformError>
saveAll(const CaptureDelivery::Captures &captures, const std::optional<std::filesystem::path> &folder) {
    auto main = saveLayer(captures.main, folder, captures.recoverable, captures.mainLayer);
    if (!main)
        return std::unexpected(std::move(main.error()));
    CaptureDelivery::AllDelivered all;
    all.main.saved = std::move(*main);
    if (!captures.camera)
        return all;
    // In a folder of the user's the names tell which is which.
    const std::string name =
        all.main.saved.file.stem().string() + " camera" + captures.camera->fileURL.extension().string();
    auto camera = saveLayer(*captures.camera, folder, captures.recoverable, RecordingLayer::camera, name);
    if (camera)
        all.camera = CaptureDelivery::Delivered{std::move(*camera), std::nullopt};
    else
        all.cameraProblem = std::move(camera.error());
    return all;
}

} // namespace

CaptureDelivery::CaptureDelivery(Options options, SessionOpener openSession,
                                 std::function<std::unique_ptr<UploadAgent>()> agent, Clock &clock)
    : m_options(std::move(options)), m_openSession(std::move(openSession)), m_findAgent(std::move(agent)),
      m_clock(clock) {}

Task<std::expected<void, CaptureDelivery::Refusal>> CaptureDelivery::prepare(std::stop_token stop) {
    std::vector<std::filesystem::path> folders{CaptureStorage::directory()};
    if (m_options.folder)
        folders.push_back(*m_options.folder);
    for (const std::filesystem::path &folder : folders) {
        if (const auto writable = prepareFolder(folder); !writable)
            co_return std::unexpected(Refusal{writable.error().description()});
    }
    co_await runBlocking([] { pruneCaptures({}); }, stop);
    if (m_options.upload)
        m_agent = m_findAgent();
    if (m_agent)
        co_return co_await m_agent->prepare(stop);
    if (m_options.upload) {
        auto session = m_openSession();
        if (!session)
            co_return std::unexpected(Refusal{session.error()});
        m_session = std::move(*session);
        auto uploads = UploadRun::create(*m_session, m_clock);
        if (!uploads)
            co_return std::unexpected(Refusal{uploads.error()});
        m_uploads = std::move(*uploads);
        if (!co_await m_session->connect(stop)) {
            const APIError notPaired(APIError::NotPaired{});
            co_return std::unexpected(Refusal{notPaired.description(), true});
        }
        // There is time until there is a capture, which then goes into the journal without waiting for them.
        m_scope.start(this, &CaptureDelivery::fetchLimits);
    }
    co_return std::expected<void, Refusal>();
}

Task<std::expected<CaptureDelivery::AllDelivered, std::variant<PlatformError, Cancelled>>>
CaptureDelivery::deliver(Captures captures, std::stop_token stop) {
    auto saved = co_await runBlocking(
        [captures, folder = m_options.folder] { return saveAll(captures, folder); }, stop);
    if (!saved)
        co_return std::unexpected(saved.error());
    AllDelivered delivered = std::move(*saved);
    delivered.main.asset = co_await send(std::move(captures.main), delivered.main.saved.file, stop);
    if (delivered.camera)
        delivered.camera->asset =
            co_await send(std::move(*captures.camera), delivered.camera->saved.file, stop);
    co_return delivered;
}

Task<std::optional<CaptureDelivery::Asset>>
CaptureDelivery::send(CaptureResult capture, std::filesystem::path file, std::stop_token stop) {
    if (m_agent)
        co_return co_await m_agent->upload(file, m_options.projectId, m_choosing.get_token());
    if (m_session)
        co_return co_await upload(std::move(capture), std::move(file), stop);
    co_return std::nullopt;
}

void CaptureDelivery::yieldTo(std::unique_ptr<UploadAgent> agent) {
    if (!m_uploads)
        return;
    m_agent = std::move(agent);
    if (m_isUploading)
        m_uploads->interrupt();
    else
        leaveJournal();
}

void CaptureDelivery::leaveJournal() {
    m_scope.cancel();
    m_uploads.reset();
    m_session.reset();
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

Task<CaptureDelivery::Asset> CaptureDelivery::upload(CaptureResult capture, std::filesystem::path file,
                                                     std::stop_token stop) {
    capture.fileURL = file;
    m_isUploading = true;
    // Into the journal before anything is waited for: a project that is not known yet follows.
    const auto project = ServiceSession::knownProject(m_options.projectId);
    const QUuid id = m_uploads->add(capture, project);
    std::optional<std::variant<std::string, Cancelled>> problem;
    if (!project) {
        const auto found = co_await m_session->projectForUpload(std::nullopt, m_choosing.get_token());
        if (found)
            m_uploads->add(std::move(capture), *found);
        else if (m_choosing.stop_requested())
            problem = Cancelled();
        else
            problem = found.error().description();
    }
    // Without a project there is nothing to wait for but the journal.
    const bool hasEnded = co_await m_uploads->finish(problem ? std::set<QUuid>() : std::set{id}, stop);
    m_isUploading = false;
    if (m_agent && !hasEnded) {
        leaveJournal();
        co_return co_await m_agent->awaitUpload(id, m_choosing.get_token());
    }
    if (problem)
        co_return std::unexpected(*problem);
    if (!hasEnded)
        co_return std::unexpected(Cancelled());
    const auto &asset = m_uploads->endOf(id)->assetId;
    if (!asset)
        co_return std::unexpected(asset.error());
    co_return *asset;
}

} // namespace vantrell
