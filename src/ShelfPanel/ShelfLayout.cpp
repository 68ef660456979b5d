// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/ShelfLayout.h"

#include "Shelf/ShelfPanelFrame.h"

#include <Qt>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

/// The panel is wider than its cards by this at the right.
constexpr int sideMargin = 24;

Rect frameOf(const ShelfLayout &layout) {
    const QRect &free = layout.free;
    return shelfPanelFrame(layout.count,
                           {double(free.x()), double(free.y()), double(free.width()), double(free.height())});
}

} // namespace

int ShelfLayout::room() const {
    const double height = frameOf(*this).height;
    const int all = int((height + cardGap) / pitch);
    if (count <= all)
        return std::max(1, count);
    return std::max(1, int((height - scrollButtonHeight - scrollButtonGap + cardGap) / pitch));
}

int ShelfLayout::mostHidden() const {
    return std::max(0, count - room());
}

QRect ShelfLayout::panel(double top) const {
    const Rect frame = frameOf(*this);
    const int height = int(std::ceil(top)) + ShelfCard::bodyHeight;
    return {int(frame.maxX()) - sideMargin - ShelfCard::bodyWidth, int(frame.maxY()) - height,
            ShelfCard::bodyWidth, height};
}

std::optional<int> ShelfLayout::cardForKey(int key, int focused) const {
    switch (key) {
    case Qt::Key_Up:
        return focused < 0 ? count - 1 : focused - 1;
    case Qt::Key_Down:
        return focused + 1;
    case Qt::Key_PageUp:
        return std::max(0, focused - room());
    case Qt::Key_PageDown:
        return std::min(count - 1, focused + room());
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return count - 1;
    default:
        return std::nullopt;
    }
}

} // namespace vantrell
