// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <variant>

namespace vantrell {

/// What lies at a point of a display while an area is selected.
struct AreaZone {
    struct CaptureButton {
        bool operator==(const CaptureButton &) const = default;
    };
    struct RecordButton {
        bool operator==(const RecordButton &) const = default;
    };
    /// A drag from here draws a new selection.
    struct Outside {
        bool operator==(const Outside &) const = default;
    };
    /// A drag from here moves the edges that are not anchored.
    struct Resize {
        std::optional<double> anchorX;
        std::optional<double> anchorY;
        bool operator==(const Resize &) const = default;
    };
    struct Move {
        bool operator==(const Move &) const = default;
    };

    std::variant<CaptureButton, RecordButton, Outside, Resize, Move> kind = Outside{};

    bool operator==(const AreaZone &) const = default;
    template <typename Kind>
    bool is() const {
        return std::holds_alternative<Kind>(kind);
    }
};

} // namespace vantrell
