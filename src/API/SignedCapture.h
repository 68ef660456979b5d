// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/UploadDescriptor.h"
#include "Support/JsonReader.h"

#include <optional>
#include <string>

namespace vantrell {

/// The service's answer to a registration or a refresh: where everything goes.
struct SignedCapture {
    struct Main {
        std::string path;
        std::string publicUrl;
        UploadDescriptor upload;
        bool operator==(const Main &) const = default;
    };
    /// Where a side file goes.
    struct SideSlot {
        /// Pre-signed: a secret.
        std::string uploadUrl;
        std::string path;
        bool operator==(const SideSlot &) const = default;
    };

    /// The service's id of the capture.
    std::string assetId;
    std::string projectId;
    Main main;
    /// Absent when no thumbnail was announced.
    std::optional<SideSlot> thumb;
    /// Absent when no metadata sidecar was announced.
    std::optional<SideSlot> meta;

    bool operator==(const SignedCapture &) const = default;

    /// Failures stay in the reader.
    static SignedCapture decode(JsonReader &reader);
};

} // namespace vantrell
