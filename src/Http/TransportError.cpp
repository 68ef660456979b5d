// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/TransportError.h"

namespace vantrell {

TransportError TransportError::cancelled() {
    return {Kind::cancelled, PlatformError{"task", 0, "cancelled"}, 0, true};
}

} // namespace vantrell
