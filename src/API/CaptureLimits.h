// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantrell {

/// The plan's limits.
struct CaptureLimits {
    std::string plan;
    std::int64_t maxVideoDurationMs = 0;
    /// None means no limit.
    std::optional<std::int64_t> maxVideoUploadBytes;

    bool operator==(const CaptureLimits &) const = default;

    /// Failures stay in the reader.
    static CaptureLimits decode(JsonReader &reader) {
        return {reader.string("plan"), reader.integer("maxVideoDurationMs"),
                reader.optionalInteger("maxVideoUploadBytes")};
    }
};

} // namespace vantrell
