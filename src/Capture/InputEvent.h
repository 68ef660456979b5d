// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string_view>

namespace vantrell {

/// One click, scroll, move or exit, in the recording's own time and coordinates.
struct InputEvent {
    /// A button went down or up, something was scrolled, the pointer moved, or it left the capture area.
    enum class Kind { down = 1, up, scroll, move, exit };

    /// Milliseconds from the start of the recording.
    double t = 0;
    Kind kind = Kind::move;
    /// Points from the capture area's top-left corner.
    double x = 0;
    double y = 0;

    bool operator==(const InputEvent &) const = default;
};

/// As it is written in the sidecar: "down", "up", "scroll", "move", "exit".
std::string_view spelling(InputEvent::Kind kind);
std::optional<InputEvent::Kind> inputEventKind(std::string_view text);

} // namespace vantrell
