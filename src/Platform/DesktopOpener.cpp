// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/DesktopOpener.h"

#include <QProcess>
#include <QStandardPaths>

namespace vantrell {

bool openWithDesktop(const std::string &address) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
    QStringList arguments;
    QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty()) {
        opener = QStandardPaths::findExecutable(QStringLiteral("gio"));
        arguments.append(QStringLiteral("open"));
    }
    if (opener.isEmpty())
        return false;
    QProcess program;
    program.setProgram(opener);
    program.setArguments(arguments << QString::fromStdString(address));
    program.setStandardInputFile(QProcess::nullDevice());
    program.setStandardOutputFile(QProcess::nullDevice());
    program.setStandardErrorFile(QProcess::nullDevice());
    return program.startDetached();
}

} // namespace vantrell
