// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/FloatingPanel.h"

#include <QStringList>

namespace vantrell {

/// What a card has no room for, in a panel beside it: a long name, a long message. Main thread.
class CardTip final : public FloatingPanel {
public:
    CardTip() : FloatingPanel({.radius = 10, .isMovable = false}) {}

    /// `card` in Qt's coordinates of the desktop. Each paragraph begins on a line of its own.
    void showBeside(const QRect &card, const QStringList &paragraphs, bool isOnLight);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QStringList m_lines;
};

} // namespace vantrell
