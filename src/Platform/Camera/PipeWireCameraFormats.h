// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera/CameraMode.h"

#include <spa/pod/builder.h>
#include <spa/pod/pod.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantrell {

/// The modes that a format description of a node stands for, those that can be read; of wide ranges the few
/// that matter.
std::vector<CameraMode> cameraModesOf(const spa_pod &formats);

/// The one mode that was agreed upon; none when it cannot be read.
std::optional<CameraMode> agreedCameraMode(const spa_pod &format);

/// Format descriptions to offer: the wanted mode first, then all that can be read, since a camera may be
/// bound to another mode by somebody else who uses it. Thread-bound; the pods live as long as it does.
class PipeWireCameraOffer {
public:
    explicit PipeWireCameraOffer(const CameraMode &wanted);
    PipeWireCameraOffer(const PipeWireCameraOffer &) = delete;
    PipeWireCameraOffer &operator=(const PipeWireCameraOffer &) = delete;

    const std::vector<const spa_pod *> &pods() const { return m_pods; }

private:
    std::vector<std::uint8_t> m_memory;
    std::vector<const spa_pod *> m_pods;
};

} // namespace vantrell
