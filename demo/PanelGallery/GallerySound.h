// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioBackend.h"

namespace vantrell::gallery {

/// Microphones to look at: they are listed, and those that are listed are half loud.
class GallerySound final : public AudioBackend {
public:
    std::vector<Microphone> connected;

    Task<std::expected<std::vector<Microphone>, PlatformError>> microphones(std::stop_token stop) override;
    std::unique_ptr<AudioSource> makeSource(AudioSourceRequest request) override;
};

} // namespace vantrell::gallery
