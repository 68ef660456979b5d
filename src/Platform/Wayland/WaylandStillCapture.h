// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/StillCapture.h"
#include "Platform/Wayland/WaylandCaptureBackend.h"

namespace vantrell {

/// Stills through the desktop's portals: one picture of a display that its user has agreed to share, else a
/// part of the desktop's own picture of the whole, where the desktop makes such ones; windows as one picture
/// of what its dialog shared.
class WaylandStillCapture final : public StillCapture {
public:
    /// The backend outlives it.
    explicit WaylandStillCapture(WaylandCaptureBackend &backend) : m_backend(backend) {}

    /// The desktop may ask or flash.
    bool canWatch() const override { return false; }
    /// Of a window that the backend was asked to choose.
    Task<Result> captureWindow(std::uint32_t window, std::stop_token stop) override;
    Task<Result> captureArea(PixelRect area, std::stop_token stop) override;

private:
    Task<Result> wholeDesktop(std::stop_token stop);
    Task<Result> fromCast(PixelRect area, std::stop_token stop);

    WaylandCaptureBackend &m_backend;
};

} // namespace vantrell
