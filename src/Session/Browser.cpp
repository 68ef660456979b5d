// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/Browser.h"

#include <QProcess>
#include <QStandardPaths>

namespace vantrell {

bool openInBrowser(const std::string &url) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty())
        return false;
    QProcess browser;
    browser.setProgram(opener);
    browser.setArguments({QString::fromStdString(url)});
    browser.setStandardInputFile(QProcess::nullDevice());
    browser.setStandardOutputFile(QProcess::nullDevice());
    browser.setStandardErrorFile(QProcess::nullDevice());
    return browser.startDetached();
}

} // namespace vantrell
