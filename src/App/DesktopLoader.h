// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/DesktopServices.h"

namespace vantrell {

/// Picks the desktop's services as `loadPlatform` picks the backends, by the same variable. The buses are
/// asked nothing that is waited for. Main thread; once.
DesktopServices loadDesktopServices();

} // namespace vantrell
