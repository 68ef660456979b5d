// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Sound/SoundPlayer.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantrell::bench {

/// Plays silence into an output of the sound server, and beeps at moments that are known ahead and, more
/// exactly, afterwards.
class BeepPlayer {
public:
    explicit BeepPlayer(const std::string &sink) : m_player(sink, filler()) {}

    /// The server plays, and has done so for a while.
    bool isSteady() const;

    /// Plans a beep to be heard at that host time and returns its frame. None when the server does not play
    /// steadily or the moment is too near.
    std::optional<std::int64_t> plan(double hostTime);
    /// Host time at which a frame was heard that was planned for `planned`; at least a second later. None
    /// when the server stumbled.
    std::optional<double> heardAt(std::int64_t frame, double planned) const;

    /// Host time at which the stream began, as it seemed at that moment.
    std::optional<double> startTime(double hostTime) const { return m_player.startTime(hostTime); }

private:
    testing::SoundPlayer::Source filler() {
        return [this](std::int64_t firstFrame, std::span<float> samples) { fill(firstFrame, samples); };
    }
    void fill(std::int64_t firstFrame, std::span<float> samples);

    std::mutex m_mutex;
    /// First frames of what is not played yet.
    std::vector<std::int64_t> m_beeps;
    std::int64_t m_written = 0;
    testing::SoundPlayer m_player;
};

} // namespace vantrell::bench
