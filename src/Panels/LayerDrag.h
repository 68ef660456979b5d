// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/PanelShell.h"

#include <optional>

namespace vantrell {

/// Follows the pointer that drags a surface of the layer shell. While a button is held some compositors tell
/// the pointer's place from where the surface was when it was pressed, others from where it is now; which it
/// is shows when the surface has moved some way: in the one case the pointer moves away from the place that
/// it took hold of, in the other it stays there. Main thread.
class LayerDrag {
public:
    LayerDrag();

    /// Where the surface's corner belongs; none while the compositor has not yet put it where it was told to.
    std::optional<QPoint> place(const QPoint &corner, const PanelShell::Drag &drag, bool isSettled);

private:
    bool m_countsFromPress;
    /// So many of the last places have told the opposite.
    int m_doubts = 0;
};

} // namespace vantrell
