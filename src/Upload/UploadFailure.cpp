// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadFailure.h"

namespace vantrell {

std::string logText(const UploadFailure &failure) {
    if (const auto *storage = std::get_if<StorageUploadError>(&failure))
        return logText(storage->underlying);
    if (const auto *api = std::get_if<APIError>(&failure))
        return api->logText();
    return std::get<PlatformError>(failure).description();
}

} // namespace vantrell
