// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/InputMonitor.h"

namespace vantrell {

/// No program on Wayland is told of what happens in others' windows: there are no clicks to be seen, and the
/// pointer's place comes with the pictures or not at all.
class WaylandInputMonitor final : public InputMonitor {
public:
    std::expected<void, PlatformError> start(std::function<void(const PointerEvent &)>) override {
        return {};
    }
    void stop() override {}
    bool seesClicks() const override { return false; }
    std::optional<Point> pointerLocation() override { return std::nullopt; }
};

} // namespace vantrell
