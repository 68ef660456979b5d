// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Widgets/ScreenPointer.h"

#include "TestSupport/ChildProcess.h"
#include "TestSupport/RunTask.h"

#include <QApplication>

namespace vantrell::testing {

void xdotool(const std::vector<std::string> &arguments) {
    std::vector<std::string> command{"xdotool"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess process(command);
    eventually([&process] { return !process.isRunning(); });
}

void clickOn(const QWidget &widget) {
    const QPoint middle = widget.mapToGlobal(widget.rect().center());
    xdotool({"mousemove", std::to_string(middle.x()), std::to_string(middle.y()), "click", "1"});
}

QWidget *controlNamed(const QString &name) {
    for (QWidget *widget : QApplication::allWidgets()) {
        if (widget->isVisible() && widget->accessibleName() == name)
            return widget;
    }
    return nullptr;
}

} // namespace vantrell::testing
