// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseAudioBackend.h"

#include "Platform/Audio/PulseAudioSource.h"
#include "Platform/Audio/PulseMicrophoneList.h"
#include "Platform/AudioError.h"
#include "Support/BlockingWork.h"

#include <utility>

namespace vantrell {

Task<std::expected<std::vector<Microphone>, PlatformError>>
PulseAudioBackend::microphones(std::stop_token stop) {
    auto listed = co_await runBlocking([] { return listPulseMicrophones(); }, stop);
    if (!listed) {
        const auto *const error = std::get_if<PlatformError>(&listed.error());
        // Cancelled: nobody reads it.
        co_return std::unexpected(error ? *error : audioError(AudioErrorCode::serverFailed));
    }
    co_return std::move(*listed);
}

std::unique_ptr<AudioSource> PulseAudioBackend::makeSource(AudioSourceRequest request) {
    return std::make_unique<PulseAudioSource>(std::move(request));
}

} // namespace vantrell
