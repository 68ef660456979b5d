// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

class QMenu;
class QWidget;

namespace vantrell {

/// Gives a menu and those below it the look of the panel that the widget is part of, also when that changes,
/// and marks them as ours. Main thread.
void dressMenu(QMenu &menu, const QWidget &control);

/// Opens it below the control, above it where there is no room below. Returns at once. The menu has the
/// keyboard and the pointer while it is open, though the panel has not.
void popUpMenu(QMenu &menu, const QWidget &control);

} // namespace vantrell
