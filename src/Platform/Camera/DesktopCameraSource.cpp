// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/DesktopCameraSource.h"

#include "Platform/Camera/PipeWireCameraSource.h"
#include "Platform/Camera/PipeWireCameraWatch.h"
#include "Platform/Camera/V4l2CameraSource.h"
#include "Support/BlockingWork.h"

#include <mutex>
#include <utility>

namespace vantrell {

/// What the choice works on, which may take longer than anybody wants the source.
struct DesktopCameraSource::State {
    const PipeWireRemote remote;
    const std::shared_ptr<V4l2Kernel> kernel;
    const std::optional<std::string> id;
    std::mutex mutex;
    bool isUnwanted = false;
    std::unique_ptr<CameraSource> source;

    std::unique_ptr<CameraSource> choose() const {
        if (kernel) {
            const auto served = listPipeWireCameras(remote);
            const bool isServed = served && !served->empty();
            if (!isServed && !kernel->devices().empty())
                return std::make_unique<V4l2CameraSource>(*kernel, id);
        }
        return std::make_unique<PipeWireCameraSource>(remote, id);
    }
};

DesktopCameraSource::DesktopCameraSource(PipeWireRemote remote, std::shared_ptr<V4l2Kernel> kernel,
                                         std::optional<std::string> id)
    : m_state(new State{.remote = std::move(remote), .kernel = std::move(kernel), .id = std::move(id)}) {}

DesktopCameraSource::~DesktopCameraSource() {
    std::unique_ptr<CameraSource> source;
    {
        const std::scoped_lock lock(m_state->mutex);
        m_state->isUnwanted = true;
        source = std::move(m_state->source);
    }
    // Without the lock: a handler that asks for the camera may be running.
    source.reset();
}

void DesktopCameraSource::start(CameraSourceHandlers handlers) {
    postToWorker([state = m_state, told = std::move(handlers)] {
        auto source = state->choose();
        const std::scoped_lock lock(state->mutex);
        if (state->isUnwanted)
            return;
        state->source = std::move(source);
        state->source->start(told);
    });
}

Camera DesktopCameraSource::camera() const {
    const std::scoped_lock lock(m_state->mutex);
    return m_state->source ? m_state->source->camera() : Camera{};
}

} // namespace vantrell
