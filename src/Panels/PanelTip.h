// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

class QEvent;
class QWidget;

namespace vantrell {

/// Shows the widget's tip as a panel, which recordings leave out as they do the others; Qt's own tips they
/// would not. To be called with each event of the widget; true when the event was about the tip. Main thread.
bool handleTipEvent(QWidget &widget, const QEvent &event);

/// Hides the tip of any control in that window.
void hideTipOf(const QWidget &window);

/// The widget's tip says something else now.
void updateTip(const QWidget &widget);

} // namespace vantrell
