// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/StillCapture.h"

#include <utility>

namespace vantrell {

/// Stands in where no still can be taken and says why.
class NullStillCapture final : public StillCapture {
public:
    explicit NullStillCapture(PlatformError reason) : m_reason(std::move(reason)) {}

    bool canWatch() const override { return false; }
    Task<Result> captureWindow(std::uint32_t, std::stop_token) override {
        co_return std::unexpected(Error(m_reason));
    }
    Task<Result> captureArea(PixelRect, std::stop_token) override {
        co_return std::unexpected(Error(m_reason));
    }

private:
    PlatformError m_reason;
};

} // namespace vantrell
