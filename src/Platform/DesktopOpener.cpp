// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/DesktopOpener.h"

#include "Support/DetachedProgram.h"

#include <QStandardPaths>

namespace vantrell {

bool openWithDesktop(const std::string &address) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
    std::vector<std::string> arguments;
    QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty()) {
        opener = QStandardPaths::findExecutable(QStringLiteral("gio"));
        arguments.emplace_back("open");
    }
    arguments.push_back(address);
    return !opener.isEmpty() && startDetached(opener.toStdString(), arguments);
}

} // namespace vantrell
