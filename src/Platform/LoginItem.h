// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>

namespace vantrell {

/// Port: whether the application starts with the user's session. Main thread.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    virtual std::expected<void, PlatformError> setEnabled(bool enabled) = 0;
};

} // namespace vantrell
