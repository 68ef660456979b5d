// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantrell {

/// A capture's name as the service takes it: without white space at its ends, at most 200 UTF-16 code units.
/// None when nothing is left. Bytes that are no UTF-8 are replaced.
std::optional<std::string> safeCaptureName(std::string_view name);

} // namespace vantrell
