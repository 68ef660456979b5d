// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BandTrials.h"
#include "Media/Encoding/LibavEncoder.h"
#include "Media/Encoding/PictureContent.h"
#include "Media/Encoding/VideoEncoder.h"

#include <atomic>
#include <expected>
#include <memory>
#include <string_view>
#include <vector>

namespace vantrell {

enum class EncoderPreference {
    /// The graphics card for pictures that cost the processor much, the processor for all others: it passes
    /// over what does not change, and no card is that cheap on a screen that mostly stands still.
    automatic,
    software,
    /// The graphics card for everything, where one works.
    hardware,
};

/// "software", "hardware"; everything else is automatic.
EncoderPreference encoderPreference(std::string_view text);

/// The graphics cards' encoders whose device files are there, best first.
std::vector<LibavEncoder::Codec> hardwareEncoders();

/// Picks the video encoder of each recording. A card's encoder has to pass a trial every time; once none has
/// passed, or one broke while recording, the rest of the process does without. Any thread.
class EncoderChoice {
public:
    EncoderChoice(EncoderPreference preference, std::vector<LibavEncoder::Codec> hardware)
        : m_preference(preference), m_hardware(std::move(hardware)), m_hardwareWorks(!m_hardware.empty()) {}

    /// Fails only when not even the software encoder starts.
    std::expected<std::unique_ptr<VideoEncoder>, PlatformError>
    create(PixelSize picture, PictureContent content = PictureContent::screen,
           ColourMatrix matrix = ColourMatrix::bt709);

    /// The encoder that `create` returned last broke in the middle of a recording.
    void encoderFailed() { m_hardwareWorks = false; }

private:
    std::unique_ptr<VideoEncoder> createHardware(PixelSize picture, PictureContent content,
                                                 ColourMatrix matrix);
    std::expected<std::unique_ptr<VideoEncoder>, PlatformError> createSoftware(PixelSize picture);

    const EncoderPreference m_preference;
    const std::vector<LibavEncoder::Codec> m_hardware;
    std::atomic<bool> m_hardwareWorks;
    const std::shared_ptr<BandTrials> m_bandTrials = std::make_shared<BandTrials>();
};

} // namespace vantrell
