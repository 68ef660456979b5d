// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/V4l2CameraList.h"

#include "Platform/Camera/V4l2Device.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>

namespace vantrell {

V4l2CameraList listV4l2Cameras(V4l2Kernel &kernel) {
    V4l2CameraList list;
    std::map<std::string, int> uses;
    for (const std::string &path : kernel.devices()) {
        const auto device = V4l2Device::open(kernel, path);
        if (!device) {
            list.isRefused = list.isRefused || device.error() == CameraErrorCode::accessRefused;
            continue;
        }
        // A camera has several devices: for its metadata, and for a second lens that sees nothing we can
        // read.
        if (device->modes().empty())
            continue;
        const auto &camera = device->camera();
        if (std::ranges::none_of(list.cameras,
                                 [&](const V4l2Camera &known) { return known.camera.id == camera.id; }))
            list.cameras.push_back({camera, path});
    }
    if (!list.cameras.empty())
        list.cameras.front().camera.isDefault = true;
    return list;
}

V4l2Watch::V4l2Watch(const V4l2Kernel &kernel, std::function<void()> changed)
    : m_changed(std::move(changed)), m_end(::eventfd(0, EFD_CLOEXEC)),
      m_notifications(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    // The rights of a new device are set a moment after it appears.
    ::inotify_add_watch(m_notifications.get(), kernel.folder().c_str(), IN_CREATE | IN_DELETE | IN_ATTRIB);
    m_thread = WorkerThread("camera devices", [this] { run(); });
}

V4l2Watch::~V4l2Watch() {
    ::eventfd_write(m_end.get(), 1);
    m_thread.join();
}

void V4l2Watch::run() {
    std::array<pollfd, 2> waited{pollfd{m_end.get(), POLLIN, 0}, pollfd{m_notifications.get(), POLLIN, 0}};
    for (;;) {
        ::poll(waited.data(), waited.size(), -1);
        if (waited[0].revents != 0)
            return;
        alignas(inotify_event) std::array<char, 4096> memory;
        const ssize_t size = ::read(m_notifications.get(), memory.data(), memory.size());
        bool isVideo = false;
        for (ssize_t at = 0; at + ssize_t(sizeof(inotify_event)) <= size;) {
            const auto *const event = reinterpret_cast<const inotify_event *>(memory.data() + at);
            isVideo = isVideo || (event->len > 0 && std::string_view(event->name).starts_with("video"));
            at += ssize_t(sizeof(inotify_event) + event->len);
        }
        if (isVideo)
            m_changed();
    }
}

} // namespace vantrell
