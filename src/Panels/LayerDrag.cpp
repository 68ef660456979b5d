// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerDrag.h"

#include <QtGlobal>

namespace vantrell {

LayerDrag::LayerDrag() : m_countsFromPress(!qgetenv("XDG_CURRENT_DESKTOP").contains("KDE")) {}

std::optional<QPoint> LayerDrag::place(const QPoint &corner, const PanelShell::Drag &drag,
                                       bool isSettled) const {
    const QPoint way = drag.nowInside - drag.pressedInside;
    if (m_countsFromPress)
        return drag.windowAtPress + way;
    if (!isSettled)
        return std::nullopt;
    return corner + way;
}

} // namespace vantrell
