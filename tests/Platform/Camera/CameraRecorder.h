// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraSource.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/RunTask.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vantrell::testing {

/// Keeps what a camera's source tells.
class CameraRecorder {
public:
    struct Picture {
        PixelSize size;
        CameraFormat format;
        double hostTime;
        /// Of raw pixels.
        std::optional<std::uint32_t> number;
        std::size_t bytes;
    };
    struct State {
        CameraSourceState state;
        std::optional<PlatformError> error;
    };

    explicit CameraRecorder(std::unique_ptr<CameraSource> source) : m_source(std::move(source)) {
        m_source->start({.frame = [this](const CameraFrame &frame) { take(frame); },
                         .stateChanged =
                             [this](CameraSourceState state, std::optional<PlatformError> error) {
                                 const std::scoped_lock lock(m_mutex);
                                 m_states.push_back({state, std::move(error)});
                             }});
    }

    const CameraSource &source() const { return *m_source; }
    std::vector<Picture> pictures() const {
        const std::scoped_lock lock(m_mutex);
        return m_pictures;
    }
    std::vector<State> states() const {
        const std::scoped_lock lock(m_mutex);
        return m_states;
    }
    /// Waits for so many more pictures.
    bool waitForPictures(std::size_t more) {
        const std::size_t wanted = pictures().size() + more;
        return eventually([&] { return pictures().size() >= wanted; });
    }
    /// Waits until the source has told so many states; the last one's error.
    std::optional<PlatformError> waitForState(std::size_t count) {
        if (!eventually([&] { return states().size() >= count; }))
            return PlatformError{"test", 0, "no such state"};
        return states()[count - 1].error;
    }

private:
    void take(const CameraFrame &frame) {
        std::optional<std::uint32_t> number;
        if (frame.format != CameraFormat::mjpeg && frame.format != CameraFormat::h264) {
            // A row of brightness alone, out of the one where the code is read.
            const auto &plane = frame.planes[0];
            const int step = frame.format == CameraFormat::yuyv ? 2 : 1;
            std::vector<std::uint8_t> luma(std::size_t(frame.size.width) * framecode::height);
            for (int y = 0; y < framecode::height; ++y)
                for (int x = 0; x < frame.size.width; ++x)
                    luma[std::size_t(y * frame.size.width + x)] =
                        plane.data[std::size_t(y * plane.stride + x * step)];
            number = framecode::read(luma.data(), frame.size.width);
        }
        const std::scoped_lock lock(m_mutex);
        m_pictures.push_back({frame.size, frame.format, frame.hostTime, number, frame.planes[0].data.size()});
    }

    mutable std::mutex m_mutex;
    std::vector<Picture> m_pictures;
    std::vector<State> m_states;
    std::unique_ptr<CameraSource> m_source;
};

} // namespace vantrell::testing
