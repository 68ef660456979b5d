// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace vantrell {

/// Port: key combinations that work whatever application is in front. Main thread.
class HotKeyBackend {
public:
    /// A key by its place on an ANSI keyboard, whatever the layout writes there, held with Super and Shift.
    enum class Key { digit7 = 1, digit8, digit9 };

    /// Releases all combinations.
    virtual ~HotKeyBackend() = default;

    /// Takes the combination until the backend is destroyed. `pressed` is called once for each press, never
    /// for a key that repeats. The error's code tells why it cannot be had; another program that holds it is
    /// the usual one.
    virtual std::expected<void, PlatformError> grab(Key key, std::function<void()> pressed) = 0;

    /// A desktop that assigns combinations itself has assigned this one, in its own words; empty: none.
    /// Absent: the combination is the one that was asked for.
    virtual std::optional<std::string> assigned(Key) const { return std::nullopt; }

    /// Why there are no hot keys at all, and what the user can do instead; known shortly after the start.
    virtual std::optional<PlatformError> problem() const { return std::nullopt; }

    /// What `assigned` and `problem` tell has changed.
    std::function<void()> onChange;
};

} // namespace vantrell
