// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/V4l2CameraSource.h"

#include "Platform/Camera/CameraPicture.h"
#include "Platform/Camera/V4l2CameraList.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <algorithm>
#include <array>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>

namespace vantrell {

namespace {

constexpr std::chrono::milliseconds deviceRetryInterval{1000};
/// Cameras take a second or two to adjust to the light before they send.
constexpr std::chrono::milliseconds devicePictureTime{4500};
constexpr std::chrono::milliseconds forever{-1};

} // namespace

V4l2CameraSource::V4l2CameraSource(V4l2Kernel &kernel, std::optional<std::string> id)
    : m_kernel(kernel), m_wantedId(std::move(id)), m_end(::eventfd(0, EFD_CLOEXEC)) {}

V4l2CameraSource::~V4l2CameraSource() {
    ::eventfd_write(m_end.get(), 1);
    m_thread.join();
}

void V4l2CameraSource::start(CameraSourceHandlers handlers) {
    m_handlers = std::move(handlers);
    m_thread = WorkerThread("camera", [this] { run(); });
}

Camera V4l2CameraSource::camera() const {
    const std::scoped_lock lock(m_mutex);
    return m_camera;
}

void V4l2CameraSource::run() {
    do {
        const CameraErrorCode why = runDevice();
        if (wait(-1, std::chrono::milliseconds(0)) == Wait::ended)
            return;
        report(CameraSourceState::deviceMissing,
               cameraError(m_hasRun && why == CameraErrorCode::noCamera ? CameraErrorCode::unplugged : why));
    } while (wait(-1, deviceRetryInterval) != Wait::ended);
}

std::expected<V4l2Device, CameraErrorCode> V4l2CameraSource::findDevice() {
    const V4l2CameraList list = listV4l2Cameras(m_kernel);
    const std::optional<std::string> id = m_hasRun ? std::optional(camera().id) : m_wantedId;
    auto found =
        std::ranges::find_if(list.cameras, [&](const V4l2Camera &each) { return each.camera.id == id; });
    if (found == list.cameras.end() && !m_hasRun)
        found = list.cameras.begin();
    if (found == list.cameras.end())
        return std::unexpected(list.isRefused ? CameraErrorCode::accessRefused : CameraErrorCode::noCamera);
    auto device = V4l2Device::open(m_kernel, found->device);
    if (device) {
        const std::scoped_lock lock(m_mutex);
        m_camera = found->camera;
    }
    return device;
}

CameraErrorCode V4l2CameraSource::runDevice() {
    auto device = findDevice();
    if (!device)
        return device.error();
    for (;;) {
        const auto mode = bestCameraMode(device->modes());
        if (!mode)
            return CameraErrorCode::noPicture;
        if (const auto started = device->start(*mode); !started)
            return started.error();
        qCInfo(logCapture, "camera sends %dx%d, format %d", device->mode().size.width,
               device->mode().size.height, int(device->mode().format));
        const auto why = takePictures(*device);
        device->stop();
        if (why)
            return *why;
    }
}

std::optional<CameraErrorCode> V4l2CameraSource::takePictures(V4l2Device &device) {
    bool hasPicture = false;
    const double begin = hostNow();
    for (;;) {
        const double left = double(devicePictureTime.count()) / 1000 - (hostNow() - begin);
        if (!hasPicture && left <= 0)
            return CameraErrorCode::noPicture;
        const Wait waited =
            wait(device.descriptor(), hasPicture ? forever : std::chrono::milliseconds(int(left * 1000) + 1));
        if (waited == Wait::ended)
            return CameraErrorCode::noPicture;
        if (waited == Wait::event && device.hasChangedShape())
            return std::nullopt;
        if (waited == Wait::late)
            continue;
        const auto picture = device.take();
        if (!picture)
            return picture.error();
        if (!*picture)
            continue;
        hasPicture = takeOne(device, **picture) || hasPicture;
        device.giveBack(**picture);
    }
}

bool V4l2CameraSource::takeOne(V4l2Device &device, const V4l2Device::Picture &picture) {
    CameraFrame frame;
    frame.size = device.mode().size;
    frame.format = device.mode().format;
    const bool isRaw = frame.format != CameraFormat::mjpeg && frame.format != CameraFormat::h264;
    if (picture.isDamaged || !splitCameraPicture(picture.bytes, isRaw ? picture.stride : 0, frame))
        return false;
    frame.hostTime = m_clock.hostTime(picture.time, hostNow());
    m_hasRun = true;
    report(CameraSourceState::running);
    if (m_handlers.frame)
        m_handlers.frame(frame);
    return true;
}

V4l2CameraSource::Wait V4l2CameraSource::wait(int fd, std::chrono::milliseconds patience) const {
    std::array<pollfd, 2> waited{pollfd{m_end.get(), POLLIN, 0}, pollfd{fd, short(POLLIN | POLLPRI), 0}};
    const int ready = ::poll(waited.data(), fd >= 0 ? 2 : 1, int(patience.count()));
    if (waited[0].revents != 0)
        return Wait::ended;
    if (ready <= 0)
        return Wait::late;
    return (waited[1].revents & POLLPRI) != 0 ? Wait::event : Wait::ready;
}

void V4l2CameraSource::report(CameraSourceState state, std::optional<PlatformError> error) {
    if (std::exchange(m_reported, state) != state && m_handlers.stateChanged)
        m_handlers.stateChanged(state, std::move(error));
}

} // namespace vantrell
