// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Relaunch.h"

#include "Support/DetachedProgram.h"

#include <QCoreApplication>

namespace vantrell {

bool relaunch(const std::filesystem::path &program) {
    if (!startDetached(program.string()))
        return false;
    QCoreApplication::quit();
    return true;
}

} // namespace vantrell
