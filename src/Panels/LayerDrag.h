// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/PanelShell.h"

#include <optional>

namespace vantrell {

/// Follows the pointer that drags a surface of the layer shell. While a button is held the compositors built
/// on wlroots tell the pointer's place from where the surface was when it was pressed, KDE's from where it is
/// now. Main thread.
class LayerDrag {
public:
    LayerDrag();

    /// Where the surface's corner belongs; none while the compositor has not yet put it where it was told to.
    std::optional<QPoint> place(const QPoint &corner, const PanelShell::Drag &drag, bool isSettled) const;

private:
    const bool m_countsFromPress;
};

} // namespace vantrell
