// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QColor>

namespace vantrell::overlayColours {

/// Over what is not selected.
inline constexpr QColor dimming{10, 13, 12, 115};
/// Where there is no picture of the screen to lie on.
inline constexpr QColor noPicture{26, 31, 29};
inline constexpr QColor outline{255, 255, 255};
/// Around the outline and the handles, so that they show on white.
inline constexpr QColor outlineShade{0, 0, 0, 110};
inline constexpr QColor loupeGrid{128, 128, 128, 90};

} // namespace vantrell::overlayColours
