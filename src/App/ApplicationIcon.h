// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string_view>

namespace vantrell {

/// The application's icon as an SVG file, for desktops that have none of it installed.
std::string_view applicationIconSvg();

} // namespace vantrell
