// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraBackend.h"

namespace vantrell::gallery {

/// Cameras to look at: they are listed, and none can be switched on.
class GalleryCameras final : public CameraBackend {
public:
    std::vector<Camera> connected{{"built-in", "Integrated Camera", true},
                                  {"usb", "Logitech BRIO Ultra HD Pro Business Webcam", false}};

    Task<std::expected<std::vector<Camera>, PlatformError>> cameras(std::stop_token) override {
        // A copy: what the task is given it takes.
        co_return std::vector(connected);
    }
    Observation observeCameras(std::function<void()>) override { return {}; }
    Task<bool> requestAccess(std::stop_token) override { co_return true; }
    std::unique_ptr<CameraSource> makeSource(std::optional<std::string>) override { return nullptr; }
};

} // namespace vantrell::gallery
