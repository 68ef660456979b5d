// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Libav/ColourMatrix.h"
#include "Support/Geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vantrell {

/// An H.264 track. Colour is BT.709 but for the matrix, limited range.
struct VideoTrackFormat {
    /// The coded picture.
    PixelSize size;
    /// Ticks per second of the samples' times.
    int timeScale = 90000;
    /// The contents of an avcC box: AVCDecoderConfigurationRecord, 4-byte NAL lengths.
    std::vector<std::uint8_t> decoderConfiguration;
    ColourMatrix matrix = ColourMatrix::bt709;
};

/// An AAC track; its time scale is the sample rate.
struct AudioTrackFormat {
    int sampleRate = 48000;
    int channels = 2;
    int samplesPerPacket = 1024;
    /// Decoded samples at the start that are the encoder's run-up and not sound.
    int primingSamples = 1024;
    /// AudioSpecificConfig.
    std::vector<std::uint8_t> decoderConfiguration;
    int bitRate = 0;
    /// What a player's track menu says: "Microphone", "System Audio".
    std::string name;
};

} // namespace vantrell
