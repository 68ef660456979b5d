// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/LibraryVersion.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace vantrell {

/// "vantrell-capture 1.2.3, build 1.2.3-1".
const char *programAndBuild();

/// What `--version` prints: the program and its build, how it was compiled, and the libraries.
std::string versionText(const std::vector<LibraryVersion> &libraries);
nlohmann::json versionJson(const std::vector<LibraryVersion> &libraries);

} // namespace vantrell
