// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/PipeWireCameraSource.h"

#include "Platform/Camera/PipeWireCameraFormats.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <spa/param/param.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace vantrell {

namespace {

/// Restarting a server takes about as long; asking a socket that is not there costs nothing.
constexpr std::chrono::seconds retryInterval{1};
/// Cameras take a second or two to adjust to the light before they send.
constexpr std::chrono::milliseconds firstPictureTime{4500};

} // namespace

PipeWireCameraSource::PipeWireCameraSource(PipeWireRemote remote, std::optional<std::string> id)
    : m_remote(std::move(remote)), m_wantedId(std::move(id)), m_loop("camera") {}

PipeWireCameraSource::~PipeWireCameraSource() {
    const PipeWireLoop::Lock lock(m_loop);
    disconnect();
    m_silent.reset();
    m_again.reset();
}

void PipeWireCameraSource::start(CameraSourceHandlers handlers) {
    m_handlers = std::move(handlers);
    if (!m_loop.loop()) {
        if (m_handlers.stateChanged)
            m_handlers.stateChanged(CameraSourceState::deviceMissing,
                                    cameraError(CameraErrorCode::noCameraServer));
        return;
    }
    const PipeWireLoop::Lock lock(m_loop);
    m_again.emplace(m_loop, [this] {
        disconnect();
        connect();
    });
    m_silent.emplace(m_loop, [this] { startAgain(m_why); });
    m_silent->start(firstPictureTime);
    // On the loop's thread: a portal may take its time to answer.
    m_again->start();
}

Camera PipeWireCameraSource::camera() const {
    const std::scoped_lock lock(m_mutex);
    return m_camera;
}

void PipeWireCameraSource::connect() {
    auto connection =
        connectToCameras(m_loop, m_remote, [this] { startAgain(CameraErrorCode::noCameraServer); });
    if (!connection) {
        report(CameraSourceState::deviceMissing, connection.error());
        m_again->start(retryInterval);
        return;
    }
    m_connection = std::move(*connection);
    m_why = CameraErrorCode::serverFailed;
    m_registry.emplace(*m_connection, [this] { camerasChanged(); });
}

void PipeWireCameraSource::disconnect() {
    closeStream();
    m_registry.reset();
    m_connection.reset();
}

std::optional<PipeWireCameraSource::Found> PipeWireCameraSource::wantedCamera() const {
    const auto cameras = m_registry->cameras();
    const auto withId = [&](const std::string &id) {
        const auto found = std::ranges::find(cameras, id, [](const Found &each) { return each.camera.id; });
        return found == cameras.end() ? std::nullopt : std::optional(*found);
    };
    if (m_hasRun)
        return withId(camera().id);
    auto found = m_wantedId ? withId(*m_wantedId) : std::nullopt;
    return found || cameras.empty() ? found : std::optional(cameras.front());
}

void PipeWireCameraSource::camerasChanged() {
    const auto found = wantedCamera();
    if (m_current && found && found->serial == m_current->serial)
        return;
    // What already runs is not changed for a new default.
    if (m_current && std::ranges::count(m_registry->cameras(), m_current->serial, &Found::serial) > 0)
        return;
    closeStream();
    if (found)
        return askForModes(*found);
    report(CameraSourceState::deviceMissing,
           cameraError(m_hasRun ? CameraErrorCode::unplugged : CameraErrorCode::noCamera));
}

void PipeWireCameraSource::askForModes(const Found &found) {
    m_current = found;
    m_modes.clear();
    m_why = CameraErrorCode::noPicture;
    m_silent->cancel();
    m_silent->start(firstPictureTime);
    m_node.reset(static_cast<pw_node *>(
        pw_registry_bind(m_registry->registry(), found.nodeId, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    if (!m_node)
        return startAgain(CameraErrorCode::serverFailed);
    static const pw_node_events events{
        .version = PW_VERSION_NODE_EVENTS,
        .param =
            [](void *self, int, std::uint32_t id, std::uint32_t, std::uint32_t, const spa_pod *formats) {
                auto &modes = static_cast<PipeWireCameraSource *>(self)->m_modes;
                if (id == SPA_PARAM_EnumFormat && formats)
                    for (const CameraMode &mode : cameraModesOf(*formats))
                        modes.push_back(mode);
            },
    };
    pw_node_add_listener(m_node.get(), m_nodeListener.hook(), &events, this);
    pw_node_enum_params(m_node.get(), 0, SPA_PARAM_EnumFormat, 0, UINT32_MAX, nullptr);
    m_connection->whenAnswered([this, serial = found.serial] {
        if (m_current && m_current->serial == serial && !m_stream)
            openStream();
    });
}

void PipeWireCameraSource::openStream() {
    const auto mode = bestCameraMode(m_modes);
    if (!mode)
        return startAgain(CameraErrorCode::noPicture);
    m_stream.emplace(*m_connection,
                     PipeWireVideoStream::Target{.object = m_current->serial, .role = "Camera"},
                     PipeWireVideoStream::Handlers{
                         .formatChanged = [this](const spa_pod &format) { formatChanged(format); },
                         .arrived = [this] { takePictures(); },
                         .stateChanged = [this](pw_stream_state state,
                                                const char *error) { streamStateChanged(state, error); }});
    const PipeWireCameraOffer offer(*mode);
    if (!m_stream->connect(offer.pods()))
        startAgain(CameraErrorCode::serverFailed);
}

void PipeWireCameraSource::closeStream() {
    m_stream.reset();
    m_nodeListener.leave();
    m_node.reset();
    m_mode.reset();
    m_current.reset();
}

void PipeWireCameraSource::formatChanged(const spa_pod &format) {
    m_mode = agreedCameraMode(format);
    if (!m_mode)
        return startAgain(CameraErrorCode::noPicture);
    qCInfo(logCapture, "camera sends %dx%d, format %d", m_mode->size.width, m_mode->size.height,
           int(m_mode->format));
    m_stream->agree({});
}

void PipeWireCameraSource::streamStateChanged(pw_stream_state state, const char *error) {
    if (state != PW_STREAM_STATE_ERROR)
        return;
    const std::string_view text = error ? error : "";
    qCInfo(logCapture, "camera's stream failed: %s", error ? error : "");
    // The text of EBUSY, which is all that is told of the driver's answer.
    const bool isBusy = text.find("busy") != std::string_view::npos;
    startAgain(isBusy ? CameraErrorCode::inUse : CameraErrorCode::noPicture);
}

void PipeWireCameraSource::takePictures() {
    while (const auto buffer = m_stream->take()) {
        CameraFrame frame;
        if (!m_mode || buffer->isWithoutPicture() || !fill(*buffer, frame))
            continue;
        constexpr double nanosecond = 1e-9;
        const auto told = buffer->presentationTime();
        frame.hostTime =
            m_clock.hostTime(told ? std::optional(double(*told) * nanosecond) : std::nullopt, hostNow());
        if (m_reported != CameraSourceState::running) {
            const std::scoped_lock lock(m_mutex);
            m_camera = m_current->camera;
        }
        m_hasRun = true;
        report(CameraSourceState::running);
        if (m_handlers.frame)
            m_handlers.frame(frame);
    }
}

bool PipeWireCameraSource::fill(const PipeWireBuffer &buffer, CameraFrame &frame) const {
    const spa_data &data = buffer->datas[0];
    if (!data.data || data.chunk->offset > data.maxsize)
        return false;
    const std::size_t size = std::min<std::size_t>(data.chunk->size, data.maxsize - data.chunk->offset);
    const auto *const bytes = static_cast<const std::uint8_t *>(data.data) + data.chunk->offset;
    frame.size = m_mode->size;
    frame.format = m_mode->format;
    return splitCameraPicture({bytes, size}, data.chunk->stride, frame);
}

void PipeWireCameraSource::startAgain(CameraErrorCode why) {
    report(CameraSourceState::deviceMissing, cameraError(why));
    // Not here: what is to be destroyed may be calling.
    m_again->cancel();
    m_again->start(retryInterval);
}

void PipeWireCameraSource::report(CameraSourceState state, std::optional<PlatformError> error) {
    m_silent->cancel();
    if (std::exchange(m_reported, state) != state && m_handlers.stateChanged)
        m_handlers.stateChanged(state, std::move(error));
}

} // namespace vantrell
