// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedStreamFactory.h"

#include "Media/Stream/StagedCaptureStream.h"

#include <utility>

namespace vantrell {

StagedStreamFactory::StagedStreamFactory(SoundStageFactory makeSound, EncoderPreference encoder)
    : m_makeSound(std::move(makeSound)),
      m_encoders(std::make_shared<EncoderChoice>(encoder, hardwareEncoders())) {}

std::unique_ptr<CaptureStream> StagedStreamFactory::makeStream(CaptureSource &source,
                                                               CaptureStreamConfiguration configuration,
                                                               CaptureStreamEvents events) {
    auto frames = source.makeFrames(configuration.cursor);
    return std::make_unique<StagedCaptureStream>(std::move(configuration), std::move(events),
                                                 std::move(frames), m_encoders, m_makeSound);
}

} // namespace vantrell
