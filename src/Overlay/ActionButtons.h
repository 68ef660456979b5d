// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <QString>

#include <optional>

class QPainter;

namespace vantrell {

/// The two buttons of a selection, "Capture" and "Record", on a panel of their own: where they are and how
/// they look. Points of their view. A value type.
struct ActionButtons {
    enum class Kind { capture = 1, record };

    Rect panel;
    Rect captureButton;
    Rect recordButton;
    std::optional<Kind> hovered;
    std::optional<Kind> pressed;

    bool operator==(const ActionButtons &) const = default;

    static QString labelOf(Kind kind);

    /// Under the selection in its middle, inside it where there is no room below, and never on `avoided`,
    /// where something of ours lies above.
    static ActionButtons placed(const Rect &selection, const Rect &bounds, const Rect &avoided);
    void draw(QPainter &painter, double scale) const;
};

} // namespace vantrell
