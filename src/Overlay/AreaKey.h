// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/AreaSelection.h"

#include <Qt>

#include <optional>

class QKeyEvent;

namespace vantrell {

/// What a key does to the area tool's selection: the arrows move it by a point, with Shift by ten, and with
/// Alt they stretch it; Ctrl+A takes the whole display. A value type.
struct AreaKey {
    double across = 0;
    double down = 0;
    bool stretches = false;
    bool takesAll = false;

    /// None when the key is none of the selection's.
    static std::optional<AreaKey> of(const QKeyEvent &event);
    /// Where there is no selection yet, it makes one to begin with.
    void applyTo(AreaSelection &area) const;

    /// The modifiers as they are after the event: a modifier's own event tells them as they were before it.
    static Qt::KeyboardModifiers modifiersAfter(const QKeyEvent &event);
};

} // namespace vantrell
