// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/AreaKey.h"

#include <QKeyEvent>

namespace vantrell {

std::optional<AreaKey> AreaKey::of(const QKeyEvent &event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    const double step = modifiers.testFlag(Qt::ShiftModifier) ? 10 : 1;
    AreaKey key;
    key.stretches = modifiers.testFlag(Qt::AltModifier);
    switch (event.key()) {
    case Qt::Key_Left:
        key.across = -step;
        return key;
    case Qt::Key_Right:
        key.across = step;
        return key;
    case Qt::Key_Up:
        key.down = -step;
        return key;
    case Qt::Key_Down:
        key.down = step;
        return key;
    case Qt::Key_A:
        key.takesAll = modifiers.testFlag(Qt::ControlModifier);
        return key.takesAll ? std::optional(key) : std::nullopt;
    default:
        return std::nullopt;
    }
}

void AreaKey::applyTo(AreaSelection &area) const {
    if (takesAll)
        area.setRect(area.bounds());
    else if (!area.rect())
        area.selectMiddle();
    else if (stretches)
        area.stretchBy(across, down);
    else
        area.moveBy(across, down);
}

Qt::KeyboardModifiers AreaKey::modifiersAfter(const QKeyEvent &event) {
    const bool isPress = event.type() == QEvent::KeyPress;
    Qt::KeyboardModifiers modifiers = event.modifiers();
    if (event.key() == Qt::Key_Shift)
        modifiers.setFlag(Qt::ShiftModifier, isPress);
    if (event.key() == Qt::Key_Alt)
        modifiers.setFlag(Qt::AltModifier, isPress);
    return modifiers;
}

} // namespace vantrell
