// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// The failure of local capture encoding.
enum class CaptureError {
    encodeFailed = 1,
};

/// The sentence for the user.
inline std::string description(CaptureError) {
    return "Could not encode the capture";
}

} // namespace vantrell
