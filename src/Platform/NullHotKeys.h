// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/HotKeyBackend.h"

#include <utility>

namespace vantrell {

/// Stands in where no key can be taken and says why.
class NullHotKeys final : public HotKeyBackend {
public:
    explicit NullHotKeys(PlatformError reason) : m_reason(std::move(reason)) {}

    std::expected<void, PlatformError> grab(Key, std::function<void()>) override {
        return std::unexpected(m_reason);
    }

private:
    PlatformError m_reason;
};

} // namespace vantrell
