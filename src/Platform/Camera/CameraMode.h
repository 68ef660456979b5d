// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraSource.h"

#include <optional>
#include <span>

namespace vantrell {

/// One of the ways in which a camera can send its pictures.
struct CameraMode {
    CameraFormat format = CameraFormat::yuyv;
    PixelSize size;
    double framesPerSecond = 30;

    bool operator==(const CameraMode &) const = default;
};

/// Of those rates the one to ask for: 30 a second or the nearest. 0 when there are none.
double bestCameraRate(std::span<const double> rates);

/// The mode to record: fluent before large, large (up to 1920x1080) before small, and of equal ones that
/// which costs least to read. None when there are none.
std::optional<CameraMode> bestCameraMode(std::span<const CameraMode> modes);

} // namespace vantrell
