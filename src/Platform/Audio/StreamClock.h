// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantrell {

/// Tells when a stream's frames sounded, from observations "by this time the stream had so many frames".
///
/// An observation can be late by up to a processing cycle of the server (43 ms) and by whatever the machine
/// was busy with; early it cannot be. So the earliest of the recent ones counts, that is the smallest offset
/// between the host's clock and the stream's. Thread-bound.
class StreamClock {
public:
    /// `frame` sounded at `hostTime` or before. True when the stream turned out to have paused: the times of
    /// the frames jump.
    bool observe(std::int64_t frame, double hostTime);

    /// Enough observations for one of them to be in time.
    bool isSet() const { return m_count >= needed; }
    /// Host seconds at which the frame sounded. Only when set.
    double timeOf(std::int64_t frame) const;

    void reset() { *this = {}; }

private:
    /// A second's worth: hardly ever are all of them late, and a stream that stumbles is followed as soon.
    static constexpr std::size_t remembered = 6;
    static constexpr std::size_t needed = 3;

    double offset() const;

    std::array<double, remembered> m_offsets{};
    std::size_t m_count = 0;
    std::size_t m_next = 0;
    int m_late = 0;
};

} // namespace vantrell
