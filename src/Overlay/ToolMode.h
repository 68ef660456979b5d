// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string_view>

namespace vantrell {

/// The capture tool: what its user points at.
enum class ToolMode { area = 1, window, screen };

constexpr std::string_view spelling(ToolMode tool) {
    switch (tool) {
    case ToolMode::area:
        return "area";
    case ToolMode::window:
        return "window";
    case ToolMode::screen:
        return "screen";
    }
    return "area";
}

} // namespace vantrell
