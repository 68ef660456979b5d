// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "GallerySound.h"

namespace vantrell::gallery {

namespace {

class HalfLoud final : public AudioSource {
public:
    explicit HalfLoud(bool isThere) : m_isThere(isThere) {}

    void start(AudioSourceHandlers handlers) override {
        handlers.stateChanged(m_isThere ? AudioSourceState::running : AudioSourceState::deviceMissing);
        if (!m_isThere)
            return;
        const std::vector<float> samples{0.5F, -0.5F};
        handlers.block({.samples = samples, .channels = 2, .hostTime = 0, .startsAnew = true});
    }

private:
    const bool m_isThere;
};

} // namespace

Task<std::expected<std::vector<Microphone>, PlatformError>> GallerySound::microphones(std::stop_token) {
    // A copy: what the task is given it takes.
    co_return std::vector(connected);
}

std::unique_ptr<AudioSource> GallerySound::makeSource(AudioSourceRequest request) {
    return std::make_unique<HalfLoud>(requireMicrophone(connected, request.deviceId).has_value());
}

} // namespace vantrell::gallery
