// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/PlatformError.h"

#include <cerrno>
#include <system_error>

namespace vantrell {

PlatformError PlatformError::fromErrno(const std::string &what, int errorNumber) {
    PlatformError error{"posix", errorNumber, what + ": " + std::generic_category().message(errorNumber)};
    if (isDiskFull(error))
        error.message = errorNumber == EDQUOT ? "Your share of the disk is full" : "The disk is full";
    return error;
}

bool isDiskFull(const PlatformError &error) {
    return error.domain == "posix" && (error.code == ENOSPC || error.code == EDQUOT);
}

} // namespace vantrell
