// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "ShelfPanel/ShelfCard.h"

#include <QRect>

#include <optional>

namespace vantrell {

/// How so many cards lie on a screen, and which of them are shown where not all have room. A value type.
struct ShelfLayout {
    static constexpr int cardGap = 8;
    /// From one card to the next.
    static constexpr int pitch = ShelfCard::bodyHeight + cardGap;
    static constexpr int scrollButtonHeight = 26;
    static constexpr int scrollButtonGap = 4;

    /// The part of the screen on which nothing of the desktop's own lies, in Qt's coordinates.
    QRect free;
    int count = 0;

    /// So many cards are shown at most, at least one.
    int room() const;
    /// So many can lie below what is shown.
    int mostHidden() const;
    /// The window without its shadow, with the lower edge of its highest card so far above the lowest place.
    QRect panel(double top) const;
    /// The card that a key of the keyboard's goes to, counted from the oldest; -1 is none. None: the key is
    /// no such key.
    std::optional<int> cardForKey(int key, int focused) const;
};

} // namespace vantrell
