// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Platform/Camera/CameraMode.h"
#include "Platform/Camera/V4l2Kernel.h"
#include "Platform/CameraError.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantrell {

/// One opened video device. Thread-bound; the kernel outlives it.
class V4l2Device {
public:
    /// Fails with accessRefused, or noCamera when it is none or not there any more.
    static std::expected<V4l2Device, CameraErrorCode> open(V4l2Kernel &kernel, std::string path);
    ~V4l2Device();
    V4l2Device(V4l2Device &&other) noexcept;
    V4l2Device &operator=(V4l2Device &&) = delete;

    /// Not the default one.
    const Camera &camera() const { return m_camera; }
    /// What becomes readable when a picture is there.
    int descriptor() const { return m_fd; }

    /// Those that can be read.
    std::vector<CameraMode> modes() const;

    /// Begins to send pictures in a mode, which the driver may change a little: `mode()` says to what. Fails
    /// with inUse when another program has the camera, noPicture when the driver refuses.
    std::expected<void, CameraErrorCode> start(const CameraMode &mode);
    void stop();
    const CameraMode &mode() const { return m_mode; }

    /// A picture in the driver's memory, until it is given back.
    struct Picture {
        std::uint32_t buffer = 0;
        std::span<const std::uint8_t> bytes;
        /// Host seconds, where the driver tells them on this clock.
        std::optional<double> time;
        std::ptrdiff_t stride = 0;
        /// The driver says that it is spoilt.
        bool isDamaged = false;
    };
    /// The next picture. None when there is none yet; an error when the device has gone or fails.
    std::expected<std::optional<Picture>, CameraErrorCode> take();
    void giveBack(const Picture &picture);
    /// The signal has another shape now: stop, ask for the modes and start again. Asks the driver once.
    bool hasChangedShape();

private:
    struct Mapping {
        void *memory = nullptr;
        std::size_t length = 0;
    };

    V4l2Device(V4l2Kernel &kernel, int fd) : m_kernel(kernel), m_fd(fd) {}

    std::expected<void, CameraErrorCode> setMode(const CameraMode &mode);
    std::expected<void, CameraErrorCode> mapBuffers();
    void addSizes(std::uint32_t pixels, CameraFormat format, std::vector<CameraMode> &modes) const;
    double rateOf(std::uint32_t pixels, PixelSize size) const;
    template <typename Argument>
    int control(unsigned long request, Argument &argument) const;

    V4l2Kernel &m_kernel;
    int m_fd;
    Camera m_camera;
    CameraMode m_mode;
    std::ptrdiff_t m_stride = 0;
    std::vector<Mapping> m_buffers;
    bool m_isStreaming = false;
};

} // namespace vantrell
