// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Shelf/ShelfPanelFrame.h"

#include <algorithm>

namespace vantrell {

Rect shelfPanelFrame(int cardCount, const Rect &visible) {
    constexpr double width = 390;
    constexpr double bottomMargin = 40;
    constexpr double cardHeight = 84;
    constexpr double chromeHeight = 110;
    constexpr double leastHeight = 420;
    const double wanted = std::max(cardHeight * std::max(cardCount, 1) + chromeHeight, leastHeight);
    const double height = std::min(wanted, visible.height - bottomMargin);
    return {visible.maxX() - width, visible.maxY() - bottomMargin - height, width, height};
}

} // namespace vantrell
