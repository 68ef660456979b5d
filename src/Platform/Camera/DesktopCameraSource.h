// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/PipeWireRemote.h"
#include "Platform/Camera/V4l2Kernel.h"
#include "Platform/CameraSource.h"

#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// A camera of the desktop's PipeWire server where that shows any, else one of the kernel's: which of the two
/// is decided when it is started.
class DesktopCameraSource final : public CameraSource {
public:
    DesktopCameraSource(PipeWireRemote remote, std::shared_ptr<V4l2Kernel> kernel,
                        std::optional<std::string> id);
    ~DesktopCameraSource() override;

    void start(CameraSourceHandlers handlers) override;
    Camera camera() const override;

private:
    struct State;
    const std::shared_ptr<State> m_state;
};

} // namespace vantrell
