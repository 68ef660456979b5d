// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Relaunch.h"

#include <QCoreApplication>
#include <QProcess>

namespace vantrell {

bool relaunch(const std::filesystem::path &program) {
    if (!QProcess::startDetached(QString::fromStdString(program.string()), {}))
        return false;
    QCoreApplication::quit();
    return true;
}

} // namespace vantrell
