// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/V4l2Device.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <linux/videodev2.h>

namespace vantrell {

namespace {

constexpr std::uint32_t buffersWanted = 4;
constexpr std::uint32_t mostListed = 64;

struct KnownPixels {
    std::uint32_t pixels;
    CameraFormat format;
};
constexpr std::array knownPixels{
    KnownPixels{V4L2_PIX_FMT_YUYV, CameraFormat::yuyv},
    KnownPixels{V4L2_PIX_FMT_NV12, CameraFormat::nv12},
    KnownPixels{V4L2_PIX_FMT_YUV420, CameraFormat::i420},
    KnownPixels{V4L2_PIX_FMT_MJPEG, CameraFormat::mjpeg},
    KnownPixels{V4L2_PIX_FMT_JPEG, CameraFormat::mjpeg},
    KnownPixels{V4L2_PIX_FMT_H264, CameraFormat::h264},
};

std::optional<CameraFormat> formatOf(std::uint32_t pixels) {
    const auto known = std::ranges::find(knownPixels, pixels, &KnownPixels::pixels);
    return known == knownPixels.end() ? std::nullopt : std::optional(known->format);
}

template <std::size_t Size>
std::string text(const std::uint8_t (&field)[Size]) {
    const auto *const first = reinterpret_cast<const char *>(field);
    return {first, ::strnlen(first, Size)};
}

CameraErrorCode failureOf(int error) {
    if (error == EBUSY)
        return CameraErrorCode::inUse;
    return error == ENODEV || error == EIO ? CameraErrorCode::unplugged : CameraErrorCode::noPicture;
}

double rateOf(const v4l2_fract &interval) {
    return interval.numerator ? double(interval.denominator) / interval.numerator : 0;
}

} // namespace

template <typename Argument>
int V4l2Device::control(unsigned long request, Argument &argument) const {
    return m_kernel.control(m_fd, request, &argument);
}

std::expected<V4l2Device, CameraErrorCode> V4l2Device::open(V4l2Kernel &kernel, std::string path) {
    const int fd = kernel.open(path);
    if (fd < 0)
        return std::unexpected(errno == EACCES || errno == EPERM ? CameraErrorCode::accessRefused
                               : errno == EBUSY                  ? CameraErrorCode::inUse
                                                                 : CameraErrorCode::noCamera);
    V4l2Device device(kernel, fd);
    v4l2_capability capability{};
    if (device.control(VIDIOC_QUERYCAP, capability) < 0)
        return std::unexpected(CameraErrorCode::noCamera);
    const std::uint32_t can = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps
                                                                                    : capability.capabilities;
    if ((can & V4L2_CAP_VIDEO_CAPTURE) == 0 || (can & V4L2_CAP_STREAMING) == 0)
        return std::unexpected(CameraErrorCode::noCamera);
    const std::string stable = kernel.stableName(path);
    device.m_camera.name = text(capability.card);
    device.m_camera.id = stable.empty() ? text(capability.bus_info) + " " + device.m_camera.name : stable;
    return device;
}

V4l2Device::V4l2Device(V4l2Device &&other) noexcept
    : m_kernel(other.m_kernel), m_fd(std::exchange(other.m_fd, -1)), m_camera(std::move(other.m_camera)),
      m_mode(other.m_mode), m_stride(other.m_stride), m_buffers(std::move(other.m_buffers)),
      m_isStreaming(std::exchange(other.m_isStreaming, false)) {
    other.m_buffers.clear();
}

V4l2Device::~V4l2Device() {
    if (m_fd < 0)
        return;
    stop();
    m_kernel.close(m_fd);
}

std::vector<CameraMode> V4l2Device::modes() const {
    std::vector<CameraMode> modes;
    for (std::uint32_t index = 0; index < mostListed; ++index) {
        v4l2_fmtdesc description{};
        description.index = index;
        description.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (control(VIDIOC_ENUM_FMT, description) < 0)
            break;
        // What the library makes of something else is no format of the camera.
        const auto format = formatOf(description.pixelformat);
        if (format && (description.flags & V4L2_FMT_FLAG_EMULATED) == 0)
            addSizes(description.pixelformat, *format, modes);
    }
    return modes;
}

void V4l2Device::addSizes(std::uint32_t pixels, CameraFormat format, std::vector<CameraMode> &modes) const {
    const auto add = [&](std::uint32_t width, std::uint32_t height) {
        const PixelSize size{int(width), int(height)};
        modes.push_back({format, size, rateOf(pixels, size)});
    };
    for (std::uint32_t index = 0; index < mostListed; ++index) {
        v4l2_frmsizeenum sizes{};
        sizes.index = index;
        sizes.pixel_format = pixels;
        if (control(VIDIOC_ENUM_FRAMESIZES, sizes) < 0) {
            v4l2_format current{};
            current.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
            // Old drivers list no sizes.
            if (index == 0 && control(VIDIOC_G_FMT, current) == 0 && current.fmt.pix.pixelformat == pixels)
                add(current.fmt.pix.width, current.fmt.pix.height);
            return;
        }
        if (sizes.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            add(sizes.discrete.width, sizes.discrete.height);
            continue;
        }
        const v4l2_frmsize_stepwise &range = sizes.stepwise;
        for (const PixelSize common : {PixelSize{1920, 1080}, PixelSize{1280, 720}, PixelSize{640, 480}})
            if (std::uint32_t(common.width) >= range.min_width &&
                std::uint32_t(common.width) <= range.max_width &&
                std::uint32_t(common.height) >= range.min_height &&
                std::uint32_t(common.height) <= range.max_height)
                add(std::uint32_t(common.width), std::uint32_t(common.height));
        add(range.max_width, range.max_height);
        return;
    }
}

double V4l2Device::rateOf(std::uint32_t pixels, PixelSize size) const {
    std::vector<double> rates;
    for (std::uint32_t index = 0; index < mostListed; ++index) {
        v4l2_frmivalenum intervals{};
        intervals.index = index;
        intervals.pixel_format = pixels;
        intervals.width = std::uint32_t(size.width);
        intervals.height = std::uint32_t(size.height);
        if (control(VIDIOC_ENUM_FRAMEINTERVALS, intervals) < 0)
            break;
        if (intervals.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
            rates.push_back(vantrell::rateOf(intervals.discrete));
            continue;
        }
        const double slowest = vantrell::rateOf(intervals.stepwise.max);
        const double fastest = vantrell::rateOf(intervals.stepwise.min);
        return std::clamp(30.0, slowest, std::max(slowest, fastest));
    }
    // A driver that tells none is one that has no choice.
    return rates.empty() ? 30 : bestCameraRate(rates);
}

std::expected<void, CameraErrorCode> V4l2Device::start(const CameraMode &mode) {
    if (auto set = setMode(mode); !set)
        return set;
    if (auto mapped = mapBuffers(); !mapped) {
        stop();
        return mapped;
    }
    v4l2_event_subscription changes{};
    changes.type = V4L2_EVENT_SOURCE_CHANGE;
    // Cameras have no such event; what turns a cable's signal into pictures has.
    control(VIDIOC_SUBSCRIBE_EVENT, changes);
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    m_isStreaming = true;
    if (control(VIDIOC_STREAMON, type) == 0)
        return {};
    const int error = errno;
    stop();
    return std::unexpected(failureOf(error));
}

std::expected<void, CameraErrorCode> V4l2Device::setMode(const CameraMode &mode) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = std::uint32_t(mode.size.width);
    format.fmt.pix.height = std::uint32_t(mode.size.height);
    format.fmt.pix.pixelformat = std::ranges::find(knownPixels, mode.format, &KnownPixels::format)->pixels;
    format.fmt.pix.field = V4L2_FIELD_ANY;
    if (control(VIDIOC_S_FMT, format) < 0)
        return std::unexpected(failureOf(errno));
    const auto given = formatOf(format.fmt.pix.pixelformat);
    if (!given)
        return std::unexpected(CameraErrorCode::noPicture);
    m_mode = {*given, {int(format.fmt.pix.width), int(format.fmt.pix.height)}, mode.framesPerSecond};
    m_stride = format.fmt.pix.bytesperline;

    v4l2_streamparm rate{};
    rate.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    constexpr std::uint32_t thousand = 1000;
    rate.parm.capture.timeperframe = {thousand, std::uint32_t(mode.framesPerSecond * thousand + 0.5)};
    // A driver that knows no rates sends as it can.
    control(VIDIOC_S_PARM, rate);
    return {};
}

std::expected<void, CameraErrorCode> V4l2Device::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = buffersWanted;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (control(VIDIOC_REQBUFS, request) < 0)
        return std::unexpected(failureOf(errno));
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer{};
        buffer.index = index;
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        if (control(VIDIOC_QUERYBUF, buffer) < 0)
            return std::unexpected(failureOf(errno));
        void *const memory = m_kernel.map(m_fd, buffer.length, off_t(buffer.m.offset));
        if (!memory)
            return std::unexpected(CameraErrorCode::noPicture);
        m_buffers.push_back({memory, buffer.length});
        if (control(VIDIOC_QBUF, buffer) < 0)
            return std::unexpected(failureOf(errno));
    }
    return m_buffers.empty() ? std::expected<void, CameraErrorCode>(std::unexpect, CameraErrorCode::noPicture)
                             : std::expected<void, CameraErrorCode>();
}

void V4l2Device::stop() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (std::exchange(m_isStreaming, false))
        control(VIDIOC_STREAMOFF, type);
    if (m_buffers.empty())
        return;
    for (const Mapping &mapping : m_buffers)
        m_kernel.unmap(mapping.memory, mapping.length);
    m_buffers.clear();
    v4l2_requestbuffers none{};
    none.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    none.memory = V4L2_MEMORY_MMAP;
    control(VIDIOC_REQBUFS, none);
}

std::expected<std::optional<V4l2Device::Picture>, CameraErrorCode> V4l2Device::take() {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    if (control(VIDIOC_DQBUF, buffer) < 0) {
        if (errno == EAGAIN)
            return std::nullopt;
        return std::unexpected(CameraErrorCode::unplugged);
    }
    if (buffer.index >= m_buffers.size())
        return std::unexpected(CameraErrorCode::noPicture);
    const Mapping &mapping = m_buffers[buffer.index];
    Picture picture;
    picture.buffer = buffer.index;
    picture.bytes = {static_cast<const std::uint8_t *>(mapping.memory),
                     std::min<std::size_t>(buffer.bytesused, mapping.length)};
    picture.stride = m_stride;
    picture.isDamaged = (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0 || buffer.bytesused == 0;
    constexpr double microsecond = 1e-6;
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        picture.time = double(buffer.timestamp.tv_sec) + double(buffer.timestamp.tv_usec) * microsecond;
    return picture;
}

void V4l2Device::giveBack(const Picture &picture) {
    v4l2_buffer buffer{};
    buffer.index = picture.buffer;
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    control(VIDIOC_QBUF, buffer);
}

bool V4l2Device::hasChangedShape() {
    v4l2_event event{};
    return control(VIDIOC_DQEVENT, event) == 0 && event.type == V4L2_EVENT_SOURCE_CHANGE;
}

} // namespace vantrell
