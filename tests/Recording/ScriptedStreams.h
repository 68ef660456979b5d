// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureStreamFactory.h"

#include <atomic>
#include <memory>
#include <vector>

namespace vantrell::testing {

/// Streams that do what the test says: the timing of ends and failures cannot be had from real ones.
class ScriptedStreams final : public CaptureStreamFactory {
public:
    struct Script {
        std::optional<StreamStartFailure> startError;
        /// Answer to `stop`: nothing keeps the stream silent for ever.
        std::optional<RecordingSummary> finishes = RecordingSummary{1, 60, 0};
        std::optional<PlatformError> fails;
    };

    /// The stream that was made last, as the test drives it.
    struct Stream {
        CaptureStreamConfiguration configuration;
        CaptureStreamEvents events;
        bool stopped = false;
        std::atomic<bool> destroyed = false;
    };

    std::unique_ptr<CaptureStream> makeStream(CaptureSource &source, CaptureStreamConfiguration configuration,
                                              CaptureStreamEvents events) override;

    Script script;
    std::vector<std::shared_ptr<Stream>> streams;
};

/// Has no pixels: what is made of it is scripted.
class ScriptedSource final : public CaptureSource {
public:
    const Facts &facts() const override { return m_facts; }
    std::optional<PixelRect> place() const override { return at; }
    bool tellsPointer() const override { return tells; }
    bool separatesPointer() const override { return separates; }
    std::unique_ptr<FrameSource> makeFrames(CursorMode) override { return nullptr; }

    std::optional<PixelRect> at;
    bool tells = false;
    bool separates = true;

private:
    Facts m_facts;
};

} // namespace vantrell::testing
