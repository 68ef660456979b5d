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

    bool isSet() const { return m_count > 0; }
    /// Host seconds at which the frame sounded. Only when set.
    double timeOf(std::int64_t frame) const;

    void reset() { *this = {}; }

private:
    /// A device's clock that is off by 300 ppm makes the smallest offset of so many observations, three a
    /// second, lag by less than a millisecond.
    static constexpr std::size_t remembered = 8;

    double offset() const;

    std::array<double, remembered> m_offsets{};
    std::size_t m_count = 0;
    std::size_t m_next = 0;
    int m_late = 0;
};

} // namespace vantrell
