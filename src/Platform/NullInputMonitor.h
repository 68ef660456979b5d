// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/InputMonitor.h"

namespace vantrell {

/// Stands in where the pointer cannot be observed and says why.
class NullInputMonitor final : public InputMonitor {
public:
    explicit NullInputMonitor(PlatformError reason) : m_reason(std::move(reason)) {}

    std::expected<void, PlatformError> start(std::function<void(const PointerEvent &)>) override {
        return std::unexpected(m_reason);
    }
    void stop() override {}
    bool seesClicks() const override { return false; }
    std::optional<Point> pointerLocation() override { return std::nullopt; }

private:
    PlatformError m_reason;
};

} // namespace vantrell
