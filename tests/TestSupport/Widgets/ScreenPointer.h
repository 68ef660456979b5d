// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QString>
#include <QWidget>

#include <string>
#include <vector>

namespace vantrell::testing {

/// Runs xdotool with these arguments on DISPLAY: the real pointer and the real keys. Waits for its end in the
/// event loop.
void xdotool(const std::vector<std::string> &arguments);
/// Moves the pointer into the widget's middle and presses the left button there.
void clickOn(const QWidget &widget);

/// The visible control with that accessible name; null when there is none.
QWidget *controlNamed(const QString &name);

} // namespace vantrell::testing
