// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ScriptedKernel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/videodev2.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vantrell::testing {

namespace {

std::uint32_t pixelsOf(CameraFormat format) {
    switch (format) {
    case CameraFormat::nv12:
        return V4L2_PIX_FMT_NV12;
    case CameraFormat::i420:
        return V4L2_PIX_FMT_YUV420;
    case CameraFormat::mjpeg:
        return V4L2_PIX_FMT_MJPEG;
    case CameraFormat::h264:
        return V4L2_PIX_FMT_H264;
    default:
        return V4L2_PIX_FMT_YUYV;
    }
}

int failWith(int error) {
    errno = error;
    return -1;
}

template <std::size_t Size>
void write(std::uint8_t (&field)[Size], const std::string &text) {
    std::copy_n(text.begin(), std::min(text.size(), Size - 1), field);
}

} // namespace

void ScriptedKernel::plug(const std::string &path, Device device) {
    const std::scoped_lock lock(m_mutex);
    m_devices[path] = std::move(device);
}

void ScriptedKernel::unplug(const std::string &path) {
    const std::scoped_lock lock(m_mutex);
    m_devices.erase(path);
    for (auto &[fd, open] : m_open)
        if (open.path == path)
            open.isGone = true;
    signal(path);
}

void ScriptedKernel::send(const std::string &path, Picture picture) {
    const std::scoped_lock lock(m_mutex);
    m_pictures[path].push_back(std::move(picture));
    signal(path);
}

void ScriptedKernel::changeShape(const std::string &path, CameraMode mode) {
    const std::scoped_lock lock(m_mutex);
    m_devices.at(path).modes = {mode};
    for (auto &[fd, open] : m_open)
        if (open.path == path)
            open.hasEvent = true;
    signal(path);
}

/// An eventfd is ready for reading; that it is an event of the device is found out by asking.
void ScriptedKernel::signal(const std::string &path) {
    for (auto &[fd, open] : m_open)
        if (open.path == path)
            ::eventfd_write(fd, 1);
}

std::optional<CameraMode> ScriptedKernel::streaming(const std::string &path) const {
    const std::scoped_lock lock(m_mutex);
    for (const auto &[fd, open] : m_open)
        if (open.path == path && open.isStreaming)
            return open.mode;
    return std::nullopt;
}

int ScriptedKernel::openDescriptors() const {
    const std::scoped_lock lock(m_mutex);
    return int(m_open.size());
}

std::vector<std::string> ScriptedKernel::devices() const {
    const std::scoped_lock lock(m_mutex);
    std::vector<std::string> paths;
    for (const auto &[path, device] : m_devices)
        paths.push_back(path);
    return paths;
}

std::string ScriptedKernel::stableName(const std::string &device) const {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_devices.find(device);
    return found == m_devices.end() ? "" : found->second.stableName;
}

int ScriptedKernel::open(const std::string &device) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_devices.find(device);
    if (found == m_devices.end())
        return failWith(ENOENT);
    if (found->second.openError)
        return failWith(found->second.openError);
    const int fd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_open[fd].path = device;
    return fd;
}

void ScriptedKernel::close(int fd) {
    const std::scoped_lock lock(m_mutex);
    m_open.erase(fd);
    ::close(fd);
}

int ScriptedKernel::control(int fd, unsigned long request, void *argument) {
    const std::scoped_lock lock(m_mutex);
    const auto open = m_open.find(fd);
    if (open == m_open.end())
        return failWith(EBADF);
    if (open->second.isGone || !m_devices.contains(open->second.path))
        return failWith(ENODEV);
    return answer(fd, open->second, request, argument);
}

int ScriptedKernel::answer(int fd, Open &open, unsigned long request, void *argument) {
    const Device &device = m_devices.at(open.path);
    const auto buffer = [&]() -> v4l2_buffer & { return *static_cast<v4l2_buffer *>(argument); };
    switch (request) {
    case VIDIOC_S_FMT: {
        if (device.streamError)
            return failWith(device.streamError);
        auto &wanted = static_cast<v4l2_format *>(argument)->fmt.pix;
        const auto mode = std::ranges::find_if(device.modes, [&](const CameraMode &each) {
            return pixelsOf(each.format) == wanted.pixelformat && each.size.width == int(wanted.width);
        });
        open.mode = mode == device.modes.end() ? device.modes.front() : *mode;
        wanted.width = std::uint32_t(open.mode.size.width);
        wanted.height = std::uint32_t(open.mode.size.height);
        wanted.pixelformat = pixelsOf(open.mode.format);
        wanted.bytesperline = open.mode.format == CameraFormat::yuyv ? wanted.width * 2 : 0;
        return 0;
    }
    case VIDIOC_REQBUFS: {
        auto &wanted = *static_cast<v4l2_requestbuffers *>(argument);
        open.queued.clear();
        open.buffers.assign(wanted.count, std::vector<std::uint8_t>(std::size_t(open.mode.size.width) *
                                                                    std::size_t(open.mode.size.height) * 2));
        return 0;
    }
    case VIDIOC_QUERYBUF:
        buffer().length = std::uint32_t(open.buffers[buffer().index].size());
        buffer().m.offset = buffer().index;
        return 0;
    case VIDIOC_QBUF:
        open.queued.push_back(buffer().index);
        if (!m_pictures[open.path].empty())
            ::eventfd_write(fd, 1);
        return 0;
    case VIDIOC_DQBUF:
        return dequeue(open, argument);
    case VIDIOC_DQEVENT:
        if (!std::exchange(open.hasEvent, false))
            return failWith(ENOENT);
        static_cast<v4l2_event *>(argument)->type = V4L2_EVENT_SOURCE_CHANGE;
        return 0;
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF:
        open.isStreaming = request == VIDIOC_STREAMON;
        return 0;
    case VIDIOC_S_PARM:
    case VIDIOC_SUBSCRIBE_EVENT:
        return 0;
    default:
        return enumerate(device, request, argument);
    }
}

int ScriptedKernel::enumerate(const Device &device, unsigned long request, void *argument) const {
    std::vector<CameraFormat> formats;
    for (const CameraMode &mode : device.modes)
        if (std::ranges::count(formats, mode.format) == 0)
            formats.push_back(mode.format);
    switch (request) {
    case VIDIOC_QUERYCAP: {
        auto &capability = *static_cast<v4l2_capability *>(argument);
        write(capability.card, device.card);
        write(capability.bus_info, device.bus);
        capability.capabilities = V4L2_CAP_DEVICE_CAPS;
        capability.device_caps =
            (device.isCamera ? V4L2_CAP_VIDEO_CAPTURE : V4L2_CAP_META_CAPTURE) | V4L2_CAP_STREAMING;
        return 0;
    }
    case VIDIOC_ENUM_FMT: {
        auto &description = *static_cast<v4l2_fmtdesc *>(argument);
        if (description.index >= formats.size())
            return failWith(EINVAL);
        description.pixelformat = pixelsOf(formats[description.index]);
        return 0;
    }
    case VIDIOC_ENUM_FRAMESIZES:
    case VIDIOC_ENUM_FRAMEINTERVALS: {
        auto *const sizes = static_cast<v4l2_frmsizeenum *>(argument);
        auto *const intervals = static_cast<v4l2_frmivalenum *>(argument);
        const bool asksSizes = request == VIDIOC_ENUM_FRAMESIZES;
        std::uint32_t index = asksSizes ? sizes->index : intervals->index;
        for (const CameraMode &mode : device.modes) {
            const std::uint32_t pixels = asksSizes ? sizes->pixel_format : intervals->pixel_format;
            if (pixelsOf(mode.format) != pixels || (!asksSizes && int(intervals->width) != mode.size.width) ||
                index-- > 0)
                continue;
            if (asksSizes) {
                sizes->type = V4L2_FRMSIZE_TYPE_DISCRETE;
                sizes->discrete = {std::uint32_t(mode.size.width), std::uint32_t(mode.size.height)};
            } else {
                intervals->type = V4L2_FRMIVAL_TYPE_DISCRETE;
                intervals->discrete = {1, std::uint32_t(mode.framesPerSecond)};
            }
            return 0;
        }
        return failWith(EINVAL);
    }
    default:
        return failWith(ENOTTY);
    }
}

int ScriptedKernel::dequeue(Open &open, void *argument) {
    auto &pictures = m_pictures[open.path];
    auto &buffer = *static_cast<v4l2_buffer *>(argument);
    if (!open.isStreaming || open.queued.empty() || pictures.empty())
        return failWith(EAGAIN);
    buffer.index = open.queued.front();
    open.queued.pop_front();
    const Picture picture = std::move(pictures.front());
    pictures.pop_front();
    auto &memory = open.buffers[buffer.index];
    buffer.bytesused = std::uint32_t(std::min(picture.bytes.size(), memory.size()));
    std::copy_n(picture.bytes.begin(), buffer.bytesused, memory.begin());
    buffer.flags = (picture.isMonotonic ? V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC : 0) |
                   (picture.isDamaged ? V4L2_BUF_FLAG_ERROR : 0);
    buffer.timestamp.tv_sec = time_t(picture.time);
    buffer.timestamp.tv_usec = suseconds_t((picture.time - double(time_t(picture.time))) * 1e6);
    return 0;
}

void *ScriptedKernel::map(int fd, std::size_t, off_t offset) {
    const std::scoped_lock lock(m_mutex);
    return m_open.at(fd).buffers[std::size_t(offset)].data();
}

void ScriptedKernel::unmap(void *, std::size_t) {}

} // namespace vantrell::testing
