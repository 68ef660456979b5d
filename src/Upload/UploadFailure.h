// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "API/TransferError.h"
#include "Support/PlatformError.h"

#include <string>
#include <variant>

namespace vantrell {

/// The main file did not get to storage.
struct StorageUploadError {
    TransferError underlying;
};

/// Why one attempt failed: the main file's transfer, a call to the service, or something on this machine.
/// An attempt that was cancelled ends with any of them; whoever awaits it asks its stop token first.
using UploadFailure = std::variant<StorageUploadError, APIError, PlatformError>;

/// For the log; without addresses or secrets.
std::string logText(const UploadFailure &failure);

} // namespace vantrell
