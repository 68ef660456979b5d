// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/FloatingPanel.h"
#include "Panels/PanelLabel.h"

namespace vantrell {

/// One line of text on the screen: a hint, or a word about the panel that it lies under. Lets the pointer do
/// nothing. Main thread.
class PillPanel : public FloatingPanel {
public:
    explicit PillPanel(PanelShell::Role role = PanelShell::Role::panel);

    /// Sizes itself.
    void setText(const QString &text);
    /// In the middle below the rectangle, in Qt's coordinates; above it where there is no room below.
    void showBelow(const QRect &frame);
    /// In the middle above it; below it where there is no room above.
    void showAbove(const QRect &frame);

private:
    void showAt(const QRect &frame, int top);

    PanelLabel *m_label;
};

} // namespace vantrell
