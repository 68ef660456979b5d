// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "BeepPlayer.h"

#include <array>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace vantrell::bench {

/// The outputs that beep: the microphone's input and the speaker.
inline constexpr std::size_t outputs = 2;

/// One flash and its beeps, as they really happened (host times).
struct Flash {
    std::uint32_t number = 0;
    double shownAt = 0;
    /// None where the sound server stumbled, or the compositor told of no picture, and nobody knows.
    std::array<std::optional<double>, outputs> heardAt;
};

/// Where the number of a flash stands on the screen; everything below flashTop lights up.
inline constexpr int flashCodeX = 16;
inline constexpr int flashCodeY = 16;
inline constexpr int flashTop = 64;

/// Seconds that a flash is light.
inline constexpr double flashLasts = 0.12;

/// Flashes on DISPLAY about once a second, at irregular times, and beeps with each flash. A flash's number is
/// drawn a while before it, so that a recording which shows the number on the dark screen, then the light,
/// has the flash's true beginning.
class FlashScene {
public:
    using Players = std::array<BeepPlayer *, outputs>;

    FlashScene(int width, int height, Players players);

    /// Ends it and tells all that was shown.
    std::vector<Flash> finish();

private:
    struct Planned {
        std::uint32_t number = 0;
        double shownAt = 0;
        std::array<std::optional<std::int64_t>, outputs> frames;
    };

    void play(const std::stop_token &stop, int width, int height);

    const Players m_players;
    std::vector<Planned> m_shown;
    std::jthread m_thread;
};

} // namespace vantrell::bench
