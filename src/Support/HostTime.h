// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/SystemClock.h"

namespace vantrell {

/// The machine's own host time, for the threads of the recording stages, which no test's clock drives.
inline double hostNow() {
    return SystemClock().hostNow();
}

} // namespace vantrell
