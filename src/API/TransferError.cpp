// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/TransferError.h"

#include <cerrno>

namespace vantrell {

TransferError transferErrorOf(const TransportError &error) {
    if (error.kind != TransportError::Kind::file)
        return APIError::of(error);
    // The body ended before the size that was announced.
    if (error.platform.code == ENODATA)
        return ContentMismatch{};
    return error.platform;
}

} // namespace vantrell
