// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioBackend.h"

namespace vantrell {

/// The sound of a desktop with a PulseAudio server, which PipeWire is too.
class PulseAudioBackend final : public AudioBackend {
public:
    Task<std::expected<std::vector<Microphone>, PlatformError>> microphones(std::stop_token stop) override;
    std::unique_ptr<AudioSource> makeSource(AudioSourceRequest request) override;
};

} // namespace vantrell
