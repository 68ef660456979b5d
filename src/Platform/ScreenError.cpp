// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/ScreenError.h"

#include <utility>

namespace vantrell {

PlatformError screenError(ScreenErrorCode code, std::string sentence) {
    return PlatformError{screenErrorDomain, int(code), std::move(sentence)};
}

bool isScreenError(const PlatformError &error, ScreenErrorCode code) {
    return error.domain == screenErrorDomain && error.code == int(code);
}

} // namespace vantrell
