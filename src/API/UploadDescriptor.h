// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <cstdint>
#include <string>
#include <variant>

namespace vantrell {

/// The main file goes to this address with one PUT.
struct StandardUpload {
    /// Pre-signed: a secret.
    std::string uploadUrl;
    bool operator==(const StandardUpload &) const = default;
};

/// The main file goes to a tus server, in chunks.
struct TusUpload {
    /// Where the upload is created.
    std::string endpoint;
    std::string signature;
    std::string apiKey;
    std::string bucket;
    std::string objectName;
    std::string contentType;
    /// Bytes per PATCH.
    std::int64_t chunkSize = 0;
    bool operator==(const TusUpload &) const = default;
};

/// How the main file is sent. Only ever decoded from the service's answer.
using UploadDescriptor = std::variant<StandardUpload, TusUpload>;

/// Failures stay in the reader. Every kind but "standard" is read as the resumable one.
UploadDescriptor decodeUploadDescriptor(JsonReader &reader);

} // namespace vantrell
