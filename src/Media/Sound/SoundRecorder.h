// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Sound/AudioTrackRecorder.h"
#include "Media/Sound/SoundStage.h"
#include "Platform/AudioBackend.h"

#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

/// The sound of one stretch over the desktop's sound server. It listens from its construction on, so that the
/// sound of the first picture is there.
class SoundRecorder final : public SoundStage {
public:
    /// For capture streams that record sound from `backend`, which outlives them.
    static SoundStageFactory factory(AudioBackend &backend);

    SoundRecorder(AudioBackend &backend, const CaptureStreamConfiguration &configuration,
                  AudioTrackRecorder::SampleTap microphone);

    void begin(MovieSink &movie) override;
    void setEpoch(double hostTime) override;
    std::vector<TrackEnd> end(double hostTime) override;
    std::optional<PlatformError> problem() const override { return m_problem; }

private:
    void waitForServer();

    /// In the order of the tracks.
    std::vector<std::unique_ptr<AudioTrackRecorder>> m_tracks;
    std::optional<PlatformError> m_problem;
};

} // namespace vantrell
