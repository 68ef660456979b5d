// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/StillCapture.h"

namespace vantrell {

/// Pictures of an X screen, each taken by a worker thread over a connection of its own. Main thread.
class X11StillCapture final : public StillCapture {
public:
    Task<Result> captureWindow(std::uint32_t window, std::stop_token stop) override;
    Task<Result> captureArea(PixelRect area, std::stop_token stop) override;
};

} // namespace vantrell
