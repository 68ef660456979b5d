// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Sound/SoundStage.h"
#include "Platform/CaptureStreamFactory.h"

#include <memory>

namespace vantrell {

/// Makes the stretches of recording that every backend's sources share: StagedCaptureStream.
class StagedStreamFactory final : public CaptureStreamFactory {
public:
    /// Without `makeSound` recordings are silent.
    explicit StagedStreamFactory(SoundStageFactory makeSound = {},
                                 EncoderPreference encoder = EncoderPreference::automatic);

    std::unique_ptr<CaptureStream> makeStream(CaptureSource &source, CaptureStreamConfiguration configuration,
                                              CaptureStreamEvents events) override;

private:
    const SoundStageFactory m_makeSound;
    const std::shared_ptr<EncoderChoice> m_encoders;
};

} // namespace vantrell
