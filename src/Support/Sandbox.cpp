// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Sandbox.h"

#include <QtGlobal>

#include <filesystem>

namespace vantrell {

bool isSandboxed() {
    std::error_code error;
    return std::filesystem::exists("/.flatpak-info", error) || !qEnvironmentVariableIsEmpty("SNAP");
}

} // namespace vantrell
