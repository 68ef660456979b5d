// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <optional>
#include <variant>

namespace vantrell {

/// What the pointer does to a selection while its button is down. Points of the selection's display.
struct Drag {
    struct Move {
        /// Where the pointer is inside the selection, from its corner.
        Point offset;
        Size size;
    };
    struct Draw {
        Point anchor;
    };
    struct Resize {
        /// The coordinates that stay: of the edge opposite the one that is dragged.
        std::optional<double> anchorX;
        std::optional<double> anchorY;
        /// The selection when the drag began.
        Rect original;
    };

    std::variant<Move, Draw, Resize> kind;
};

} // namespace vantrell
