// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/CameraMode.h"
#include "Platform/Camera/V4l2Kernel.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vantrell::testing {

/// The kernel's side of video devices that a test makes up: answers each call as drivers do. Thread-safe.
class ScriptedKernel final : public V4l2Kernel {
public:
    struct Device {
        std::string card = "Scripted camera";
        std::string bus = "usb-1";
        std::string stableName;
        std::vector<CameraMode> modes = {{CameraFormat::yuyv, {640, 480}, 30}};
        bool isCamera = true;
        /// errno of the call; 0 works.
        int openError = 0;
        int streamError = 0;
    };
    struct Picture {
        std::vector<std::uint8_t> bytes;
        double time = 0;
        bool isMonotonic = true;
        bool isDamaged = false;
    };

    void plug(const std::string &path, Device device);
    /// Calls on it fail with ENODEV from now on.
    void unplug(const std::string &path);
    /// Waits in the device's queue until a buffer takes it.
    void send(const std::string &path, Picture picture);
    /// The signal has only this shape now.
    void changeShape(const std::string &path, CameraMode mode);
    /// Somebody takes pictures, in that mode.
    std::optional<CameraMode> streaming(const std::string &path) const;
    int openDescriptors() const;

    std::vector<std::string> devices() const override;
    std::string stableName(const std::string &device) const override;
    int open(const std::string &device) override;
    void close(int fd) override;
    int control(int fd, unsigned long request, void *argument) override;
    void *map(int fd, std::size_t length, off_t offset) override;
    void unmap(void *memory, std::size_t length) override;

private:
    struct Open {
        std::string path;
        bool isGone = false;
        bool isStreaming = false;
        bool hasEvent = false;
        CameraMode mode;
        std::vector<std::vector<std::uint8_t>> buffers;
        std::deque<std::uint32_t> queued;
    };

    int answer(int fd, Open &open, unsigned long request, void *argument);
    int enumerate(const Device &device, unsigned long request, void *argument) const;
    int dequeue(Open &open, void *argument);
    void signal(const std::string &path);

    mutable std::mutex m_mutex;
    std::map<std::string, Device> m_devices;
    std::map<std::string, std::deque<Picture>> m_pictures;
    std::map<int, Open> m_open;
};

} // namespace vantrell::testing
