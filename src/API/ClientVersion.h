// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string>

namespace vantrell {

/// What the service is told about this program: version, "+", build. A missing part reads "0".
std::string composeClientVersion(const std::optional<std::string> &version,
                                 const std::optional<std::string> &build);

/// This program's own.
const std::string &clientVersion();

} // namespace vantrell
