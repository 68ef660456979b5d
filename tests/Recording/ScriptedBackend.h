// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureBackend.h"

#include <memory>
#include <vector>

namespace vantrell::testing {

/// A screen whose streams do what the test says: the timing of ends and failures cannot be had from a real
/// one.
class ScriptedBackend final : public CaptureBackend {
public:
    struct Script {
        std::optional<PlatformError> startError;
        /// Answer to `stop`: nothing keeps the stream silent for ever.
        std::optional<RecordingSummary> finishes = RecordingSummary{1, 60, 0};
        std::optional<PlatformError> fails;
    };

    /// The stream that was made last, as the test drives it.
    struct Stream {
        CaptureStreamConfiguration configuration;
        CaptureStreamEvents events;
        bool stopped = false;
        bool destroyed = false;
    };

    std::expected<std::vector<Display>, PlatformError> displays() override { return std::vector<Display>(); }
    std::expected<std::vector<WindowDescription>, PlatformError> windows() override {
        return std::vector<WindowDescription>();
    }
    std::unique_ptr<CaptureStream> makeStream(CaptureStreamConfiguration configuration,
                                              CaptureStreamEvents events) override;

    Script script;
    std::vector<std::shared_ptr<Stream>> streams;
};

} // namespace vantrell::testing
