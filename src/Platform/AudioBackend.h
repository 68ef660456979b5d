// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioSource.h"
#include "Platform/Microphone.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <expected>
#include <memory>
#include <stop_token>
#include <vector>

namespace vantrell {

/// Port: the sound of this desktop.
class AudioBackend {
public:
    virtual ~AudioBackend() = default;

    /// The microphones that are connected, the default one first. Errors: AudioErrorCode::noSoundServer,
    /// serverFailed. Ends within five seconds. Main thread.
    virtual Task<std::expected<std::vector<Microphone>, PlatformError>> microphones(std::stop_token stop) = 0;

    /// Touches nothing until the source is started. Thread-safe.
    virtual std::unique_ptr<AudioSource> makeSource(AudioSourceRequest request) = 0;
};

} // namespace vantrell
