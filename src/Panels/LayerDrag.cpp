// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerDrag.h"

#include <QtGlobal>

namespace vantrell {

namespace {

/// Before the surface has moved so far, a quick pointer may look like either.
constexpr int tellingDistance = 60;
constexpr int mostDoubts = 3;

} // namespace

LayerDrag::LayerDrag() : m_countsFromPress(!qgetenv("XDG_CURRENT_DESKTOP").contains("KDE")) {}

std::optional<QPoint> LayerDrag::place(const QPoint &corner, const PanelShell::Drag &drag, bool isSettled) {
    const QPoint way = drag.nowInside - drag.pressedInside;
    const int moved = (corner - drag.windowAtPress).manhattanLength();
    if (isSettled && moved >= tellingDistance) {
        const bool looksLikeIt = way.manhattanLength() > moved / 2;
        m_doubts = looksLikeIt == m_countsFromPress ? 0 : m_doubts + 1;
        if (m_doubts >= mostDoubts) {
            m_countsFromPress = looksLikeIt;
            m_doubts = 0;
        }
    }
    if (m_countsFromPress)
        return drag.windowAtPress + way;
    if (!isSettled)
        return std::nullopt;
    return corner + way;
}

} // namespace vantrell
